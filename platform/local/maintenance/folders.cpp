#include "platform/local/maintenance/folders.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

namespace local {

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
