// Which file it is, whatever paths lead to it.
#pragma once

#include <optional>

#include <sys/stat.h>

namespace local {

struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;
    bool operator==(const FileIdentity&) const = default;
};

inline FileIdentity identityOf(const struct stat& file) {
    return {file.st_dev, file.st_ino};
}

// Of an open file; nothing, with errno, when it cannot be told.
std::optional<FileIdentity> identityOf(int file);

// Whether `sought` is the open folder or one of those above it.
bool isAtOrAbove(const FileIdentity& sought, int folder);

} // namespace local
