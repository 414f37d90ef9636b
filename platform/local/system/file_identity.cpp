#include "platform/local/system/file_identity.h"

#include "platform/local/system/unique_fd.h"

#include <fcntl.h>

namespace local {

std::optional<FileIdentity> identityOf(int file) {
    struct stat status = {};
    return fstat(file, &status) == 0 ? std::optional(identityOf(status)) : std::nullopt;
}

bool isAtOrAbove(const FileIdentity& sought, int folder) {
    UniqueFd at(openat(folder, ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    auto here = identityOf(at.get());
    while (here && *here != sought) {
        UniqueFd above(openat(at.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
        const auto next = identityOf(above.get());
        if (!next || next == here)
            return false;
        at = std::move(above);
        here = next;
    }
    return here.has_value();
}

} // namespace local
