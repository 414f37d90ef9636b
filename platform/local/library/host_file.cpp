#include "platform/local/library/host_file.h"

#include "platform/local/library/library_location.h"
#include "platform/local/system/file_identity.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <climits>
#include <optional>

namespace local {

namespace {

std::optional<FileIdentity> libraryFolder() {
    const auto path = libraryPath();
    struct stat folder = {};
    if (!path || stat(path->c_str(), &folder) != 0)
        return std::nullopt;
    return identityOf(folder);
}

UniqueFd openFolder(const std::string& path) {
    return UniqueFd(open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

// Whether the folder is one that an edit in progress renders into.
bool isEditFolder(int folder, const FileIdentity& library) {
    std::array<char, PATH_MAX> path;
    const std::string link = "/proc/self/fd/" + std::to_string(folder);
    const ssize_t length = readlink(link.c_str(), path.data(), path.size());
    if (length <= 0 ||
        !std::string_view(path.data(), static_cast<std::size_t>(length)).ends_with(".edit"))
        return false;
    const UniqueFd incoming(openat(folder, "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
    const UniqueFd above(incoming ? openat(incoming.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC)
                                  : -1);
    struct stat status = {};
    return above && fstat(above.get(), &status) == 0 && identityOf(status) == library;
}

bool holds(const HostFile& place, const FileIdentity& library) {
    struct stat file = {};
    if (fstatat(place.folder.get(), place.name.c_str(), &file, AT_SYMLINK_NOFOLLOW) != 0 ||
        !S_ISDIR(file.st_mode))
        return false;
    const auto path = libraryPath();
    const UniqueFd folder = path ? openFolder(*path) : UniqueFd();
    return identityOf(file) == library || (folder && isAtOrAbove(identityOf(file), folder.get()));
}

std::string withoutTrailingSlashes(std::string path) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

LibraryError outOfBounds() {
    return {posixErrorDomain, EPERM,
            "The photo library's own folder cannot be written to from outside."};
}

} // namespace

HostFile changeableFile(const std::string& given) {
    const std::string path = withoutTrailingSlashes(given);
    const std::size_t slash = path.find_last_of('/');
    HostFile place;
    place.name = path.substr(slash + 1);
    if (place.name.empty() || place.name == "." || place.name == "..")
        throw systemError("There is no file at \"" + given + "\"", EINVAL);
    place.folder = openFolder(slash == std::string::npos ? "."
                              : slash == 0               ? "/"
                                                         : path.substr(0, slash));
    if (!place.folder)
        throw systemError("The folder of \"" + given + "\" could not be opened", errno);
    const auto library = libraryFolder();
    if (!library)
        return place;
    const bool inside =
        isAtOrAbove(*library, place.folder.get()) && !isEditFolder(place.folder.get(), *library);
    if (inside || holds(place, *library))
        throw outOfBounds();
    return place;
}

bool mayMakeDirectory(const std::string& given) {
    const auto library = libraryFolder();
    if (!library)
        return true;
    std::string path = withoutTrailingSlashes(given);
    for (;;) {
        if (const UniqueFd folder = openFolder(path.empty() ? "." : path))
            return !isAtOrAbove(*library, folder.get());
        if (errno != ENOENT || path.empty())
            return true; // it cannot be made there anyway
        const std::size_t slash = path.find_last_of('/');
        if (path.substr(slash + 1) == "..")
            return false; // it would lead away from what is not there yet
        path = slash == std::string::npos ? "" : slash == 0 ? "/" : path.substr(0, slash);
    }
}

} // namespace local
