// Files of the host's choosing. Links at the place itself are never followed for writing: what they
// point to was not named.
#include "platform/files.h"

#include "platform/local/change/content_types.h"
#include "platform/local/library/host_file.h"
#include "platform/local/system/guarded.h"
#include "platform/local/system/write_all.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>

namespace local {

namespace {

using platform::NSData;

constexpr std::size_t firstRoom = std::size_t{64} << 10;
constexpr off_t mostInMemory = off_t{2} << 30; // no picture is larger
constexpr mode_t usualMode = 0666;             // less what the process's mask takes away
constexpr int writing = O_WRONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;

UniqueFd openRegularFile(const std::string& path) {
    UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status = {};
    if (!file || fstat(file.get(), &status) != 0)
        throw systemError("The file could not be opened", errno);
    if (!S_ISREG(status.st_mode))
        throw systemError("It is not a file of bytes", EINVAL);
    return file;
}

void writeThrough(int file, const std::uint8_t* bytes, std::size_t size) {
    if (!local::writeAll(file, bytes, size))
        throw systemError("The file could not be written", errno);
}

void closeWritten(UniqueFd& file) {
    if (close(file.release()) != 0)
        throw systemError("The file could not be written", errno);
}

// True when the kernel has copied all of it.
bool copyInKernel(int source, int target) {
    if (ioctl(target, FICLONE, source) == 0)
        return true;
    for (bool begun = false;; begun = true) {
        const ssize_t copied =
            copy_file_range(source, nullptr, target, nullptr, std::size_t{1} << 30, 0);
        if (copied == 0)
            return begun; // some file systems answer 0 for what they do not support
        if (copied < 0 && !begun)
            return false;
        if (copied < 0)
            throw systemError("The file could not be copied", errno);
    }
}

void copyBytes(int source, int target) {
    if (copyInKernel(source, target))
        return;
    const std::unique_ptr<std::uint8_t[]> chunk(new std::uint8_t[std::size_t{1} << 20]);
    for (;;) {
        const ssize_t got = read(source, chunk.get(), std::size_t{1} << 20);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            throw systemError("The file could not be read", errno);
        if (got == 0)
            return;
        writeThrough(target, chunk.get(), static_cast<std::size_t>(got));
    }
}

// Makes a file that was not there and fills it; a failure leaves nothing of it.
template <class Fill>
void makeFile(const HostFile& place, const std::string& name, Fill fill) {
    UniqueFd file(openat(place.folder.get(), name.c_str(), writing | O_CREAT | O_EXCL, usualMode));
    if (!file)
        throw systemError("The file could not be made", errno);
    try {
        fill(file.get());
        closeWritten(file);
    } catch (...) {
        unlinkat(place.folder.get(), name.c_str(), 0);
        throw;
    }
}

void copyItem(const std::string& from, const std::string& to) {
    const UniqueFd source = openRegularFile(from);
    const HostFile place = changeableFile(to);
    makeFile(place, place.name, [&](int file) { copyBytes(source.get(), file); });
}

NSData contentsOf(const std::string& path) {
    const UniqueFd file = openRegularFile(path);
    struct stat status = {};
    if (fstat(file.get(), &status) != 0 || status.st_size > mostInMemory)
        throw systemError("The file could not be read", EFBIG);
    NSData data;
    std::size_t length = 0;
    for (;;) {
        // Room follows what was read: the size that a file states may be a hole's.
        if (length == data.size())
            data.resize(std::max(2 * data.size(), firstRoom));
        const ssize_t got = read(file.get(), data.data() + length, data.size() - length);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            throw systemError("The file could not be read", errno);
        if (got == 0)
            break;
        length += static_cast<std::size_t>(got);
    }
    data.resize(length);
    return data;
}

void writeWhole(const HostFile& place, const NSData& data) {
    const std::string part = "." + place.name.substr(0, 200) + ".part-" + std::to_string(getpid()) +
                             "-" + std::to_string(gettid());
    makeFile(place, part, [&](int file) {
        writeThrough(file, data.data(), data.size());
        if (fdatasync(file) != 0)
            throw systemError("The file could not be written through", errno);
    });
    const int folder = place.folder.get();
    if (renameat(folder, part.c_str(), folder, place.name.c_str()) == 0)
        return;
    const int failure = errno;
    unlinkat(folder, part.c_str(), 0);
    throw systemError("The file could not be put into its place", failure);
}

void writeInPlace(const HostFile& place, const NSData& data) {
    UniqueFd file(
        openat(place.folder.get(), place.name.c_str(), writing | O_CREAT | O_TRUNC, usualMode));
    if (!file)
        throw systemError("The file could not be opened", errno);
    writeThrough(file.get(), data.data(), data.size());
    closeWritten(file);
}

// True when `work` did not throw; else `error` tells why.
template <class Work>
bool succeeds(std::optional<platform::NSError>& error, Work work) {
    try {
        work();
        return true;
    } catch (const LibraryError& failure) {
        error = failure.error();
    } catch (const std::exception&) {
        error = systemError("The file could not be written", ENOMEM).error();
    }
    return false;
}

} // namespace

} // namespace local

namespace platform {

bool isReadableFileAtPath(const std::string& path) {
    struct stat file = {};
    if (path.empty() || stat(path.c_str(), &file) != 0 || !S_ISREG(file.st_mode))
        return false;
    return faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) == 0;
}

std::optional<UTType> contentTypeOfFileAtURL(const NSURL& url) {
    auto type = local::contentTypeOfName(url.path);
    return type ? std::optional(UTType{std::move(*type)}) : std::nullopt;
}

bool conformsToType(const UTType& type, const UTType& other) {
    if (type.identifier == other.identifier)
        return true;
    return other.identifier == UTTypeMovie.identifier && local::isMovieType(type.identifier);
}

bool createDirectoryAtPath(const std::string& path) {
    if (path.empty() || !local::mayMakeDirectory(path))
        return false;
    std::error_code error;
    std::filesystem::create_directories(path, error);
    return std::filesystem::is_directory(path, error);
}

bool removeItemAtPath(const std::string& path) {
    return local::orElse(false, [&] {
        const local::HostFile place = local::changeableFile(path);
        const std::filesystem::path item =
            "/proc/self/fd/" + std::to_string(place.folder.get()) + "/" + place.name;
        std::error_code error;
        const auto removed = std::filesystem::remove_all(item, error);
        return !error && removed > 0 && removed != static_cast<std::uintmax_t>(-1);
    });
}

bool removeItemAtURL(const NSURL& url) {
    return removeItemAtPath(url.path);
}

bool createFileAtPath(const std::string& path) {
    return local::orElse(false, [&] {
        const local::HostFile place = local::changeableFile(path);
        const local::UniqueFd file(openat(place.folder.get(), place.name.c_str(),
                                          local::writing | O_CREAT | O_TRUNC, local::usualMode));
        struct stat status = {};
        return file && fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
    });
}

bool copyItemAtURL(const NSURL& source, const NSURL& destination, std::optional<NSError>& error) {
    return local::succeeds(error, [&] { local::copyItem(source.path, destination.path); });
}

std::optional<NSData> dataWithContentsOfFile(const std::string& path) {
    return local::orElse<std::optional<NSData>>(
        std::nullopt, [&]() -> std::optional<NSData> { return local::contentsOf(path); });
}

bool writeToURL(const NSData& data, const NSURL& url, unsigned long options,
                std::optional<NSError>& error) {
    return local::succeeds(error, [&] {
        const local::HostFile place = local::changeableFile(url.path);
        if ((options & NSDataWritingAtomic) != 0)
            local::writeWhole(place, data);
        else
            local::writeInPlace(place, data);
    });
}

} // namespace platform
