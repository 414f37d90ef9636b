// Disks that are meant to be mounted and are not.
#pragma once

#include <optional>
#include <string>

namespace local {

// The folder at `path` or above it that /etc/fstab names as a mount point, that nothing is mounted
// on, and that is empty or missing: what is made there would be hidden once its disk is mounted.
// Nothing when there is no such folder, or it cannot be told.
std::optional<std::string> unmountedPlaceOf(const std::string& path);

} // namespace local
