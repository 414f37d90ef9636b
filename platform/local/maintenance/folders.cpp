#include "platform/local/maintenance/folders.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

namespace local {

namespace {

bool isSame(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

} // namespace

bool isAtOrAbove(int sought, int folder) {
    struct stat wanted {};
    struct stat here {};
    UniqueFd at(openat(folder, ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (fstat(sought, &wanted) != 0 || !at || fstat(at.get(), &here) != 0)
        return false;
    while (!isSame(here, wanted)) {
        UniqueFd above(openat(at.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
        struct stat next {};
        if (!above || fstat(above.get(), &next) != 0 || isSame(next, here))
            return false;
        at = std::move(above);
        here = next;
    }
    return true;
}

UniqueFd nearestFolder(const std::string& path) {
    std::error_code error;
    std::filesystem::path at = std::filesystem::absolute(path, error).lexically_normal();
    for (;;) {
        UniqueFd folder(open(at.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (folder || errno != ENOENT || !at.has_relative_path())
            return folder;
        at = at.parent_path();
    }
}

} // namespace local
