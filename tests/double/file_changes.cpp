// Files of the operating system as they are read and written: bytes under paths, no directories.
#include "tests/double/scripted_library.h"

namespace platform {

using scripted::library;

namespace {

struct OpenFile {
    std::string path;
    bool isOpen = true;
};

OpenFile& openFileBehind(const NSFileHandle& file) {
    return *static_cast<OpenFile*>(file.object.get());
}

} // namespace

bool createDirectoryAtPath(const std::string& path) {
    return library().attempt("make directory " + path);
}

bool removeItemAtPath(const std::string& path) {
    if (!library().attempt("remove " + path))
        return false;
    const std::lock_guard lock(library().mutex);
    return library().files.erase(path) != 0;
}

bool removeItemAtURL(const NSURL& url) {
    return removeItemAtPath(url.path);
}

bool createFileAtPath(const std::string& path) {
    if (!library().attempt("create " + path))
        return false;
    const std::lock_guard lock(library().mutex);
    library().files[path].clear();
    return true;
}

bool copyItemAtURL(const NSURL& source, const NSURL& destination, std::optional<NSError>& error) {
    if (!library().attempt("copy " + source.path + " to " + destination.path)) {
        error = library().fileError;
        return false;
    }
    const std::lock_guard lock(library().mutex);
    library().files[destination.path] = library().files.at(source.path);
    return true;
}

std::optional<NSData> dataWithContentsOfFile(const std::string& path) {
    library().note("read " + path);
    const std::lock_guard lock(library().mutex);
    const auto file = library().files.find(path);
    if (file == library().files.end())
        return std::nullopt;
    return NSData(file->second.begin(), file->second.end());
}

bool writeToURL(const NSData& data, const NSURL& url, unsigned long options,
                std::optional<NSError>& error) {
    if (!library().attempt("write " + url.path + ", options " + std::to_string(options))) {
        error = library().fileError;
        return false;
    }
    const std::lock_guard lock(library().mutex);
    library().files[url.path].assign(data.begin(), data.end());
    return true;
}

std::optional<NSFileHandle> fileHandleForWritingAtPath(const std::string& path) {
    if (!library().attempt("open " + path))
        return std::nullopt;
    return NSFileHandle{std::make_shared<OpenFile>(OpenFile{path})};
}

void writeData(const NSFileHandle& file, std::span<const std::uint8_t> data) {
    const std::string text(data.begin(), data.end());
    OpenFile& openFile = openFileBehind(file);
    library().note("write '" + text + "'");
    const std::lock_guard lock(library().mutex);
    if (!openFile.isOpen)
        throw NSException("The file is closed.");
    if (const auto answer = scripted::next(library().writeAnswers); answer.fails)
        throw NSException(answer.reason);
    library().files[openFile.path] += text;
}

void closeFile(const NSFileHandle& file) {
    OpenFile& openFile = openFileBehind(file);
    library().note("close " + openFile.path);
    const std::lock_guard lock(library().mutex);
    openFile.isOpen = false;
}

} // namespace platform
