#include "platform/local/maintenance/quarantine.h"
#include "platform/local/system/folder_names.h"
#include "platform/local/system/write_all.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>

namespace local {

namespace {

constexpr const char* quarantine = "quarantine";

void syncFolder(int library, const std::string& path) {
    const UniqueFd folder(openat(library, path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder || fsync(folder.get()) != 0)
        throw systemError("The folder " + path + " could not be made durable", errno);
}

std::string folderOfPath(const std::string& path) {
    return path.substr(0, path.find_last_of('/'));
}

// Never over a file that is there.
bool rename(int library, const std::string& from, const std::string& to) {
    if (renameat2(library, from.c_str(), library, to.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno == EEXIST)
        return false;
    throw systemError("The file " + from + " could not be moved", errno);
}

void copy(int source, int target) {
    std::array<std::uint8_t, 256 * 1024> chunk;
    for (;;) {
        const ssize_t got = read(source, chunk.data(), chunk.size());
        if (got == 0)
            break;
        if (got < 0)
            throw systemError("The file could not be read", errno);
        if (!writeAll(target, chunk.data(), static_cast<std::size_t>(got)))
            throw systemError("The file could not be written", errno);
    }
    if (fsync(target) != 0)
        throw systemError("The file could not be written through", errno);
}

void makeQuarantine(int library) {
    if (mkdirat(library, quarantine, 0700) == 0)
        syncFolder(library, ".");
    else if (errno != EEXIST)
        throw systemError("The folder quarantine could not be made", errno);
}

} // namespace

std::string moveToQuarantine(int library, const std::string& path) {
    makeQuarantine(library);
    const std::string name = path.substr(path.find_last_of('/') + 1);
    for (int number = 0;; ++number) {
        std::string place = std::string(quarantine) + "/" + name;
        if (number > 0)
            place += "." + std::to_string(number);
        if (!rename(library, path, place))
            continue;
        syncFolder(library, quarantine);
        syncFolder(library, folderOfPath(path));
        return place;
    }
}

std::string copyToQuarantine(int library, const NamedFile& wanted, int from,
                             const std::string& found) {
    makeQuarantine(library);
    std::string copied = std::string(quarantine) + "/" + wanted.name + ".copy";
    const UniqueFd source(openat(from, found.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    const UniqueFd target(openat(library, copied.c_str(),
                                 O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!source || !target)
        throw systemError("The file " + found + " could not be copied", errno);
    copy(source.get(), target.get());
    return copied;
}

std::string findInQuarantine(int library, const NamedFile& wanted) {
    for (const std::string& name : namesIn(library, quarantine)) {
        std::string path = std::string(quarantine) + "/" + name;
        struct stat status = {};
        if (fstatat(library, path.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 ||
            !S_ISREG(status.st_mode) || status.st_size != wanted.size)
            continue;
        const UniqueFd file(openat(library, path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
        if (file && hasContent(file.get(), wanted.hash, wanted.size, nullptr))
            return path;
    }
    return {};
}

void putInPlace(int library, const NamedFile& wanted, const std::string& found) {
    const std::string shelf = folderOfPath(wanted.path());
    if (mkdirat(library, shelf.c_str(), 0700) == 0)
        syncFolder(library, folderOfPath(shelf));
    else if (errno != EEXIST)
        throw systemError("The folder " + shelf + " could not be made", errno);
    if (!rename(library, found, wanted.path()))
        throw LibraryError(posixErrorDomain, EEXIST, "Another file has taken its place.");
    syncFolder(library, shelf);
}

} // namespace local
