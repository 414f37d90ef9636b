// Which disk a place is on, and disks that are meant to be mounted and are not.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace local {

// The folder at `path` or above it that /etc/fstab names as a mount point, that nothing is mounted
// on, and that is empty or missing: what is made there would be hidden once its disk is mounted.
// Nothing when there is no such folder, or it cannot be told.
std::optional<std::string> unmountedPlaceOf(const std::string& path);

// The type of the file system that holds `path`, or what will stand there, as the system names it
// ("ext4", "nfs4", "fuse.sshfs"); "unknown" when it cannot be told.
std::string fileSystemTypeOf(const std::string& path);

// Whether a file system of this type is shared between machines. SQLite's log keeps its index in
// memory that only the processes of one machine share: from two machines it damages the catalogue.
bool isNetworkType(std::string_view type);

} // namespace local
