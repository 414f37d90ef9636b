#include "platform/local/mount_points.h"

#include <mntent.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <vector>

namespace local {

namespace {

namespace fs = std::filesystem;

struct CloseTable {
    void operator()(std::FILE* table) const { endmntent(table); }
};

std::vector<fs::path> mountPointsIn(const char* table) {
    std::vector<fs::path> places;
    const std::unique_ptr<std::FILE, CloseTable> file(setmntent(table, "re"));
    mntent entry{};
    std::array<char, 8192> text{};
    while (file && getmntent_r(file.get(), &entry, text.data(), static_cast<int>(text.size())))
        places.push_back(fs::path(entry.mnt_dir).lexically_normal());
    return places;
}

bool isAtOrAbove(const fs::path& folder, const fs::path& path) {
    return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first ==
           folder.end();
}

bool isEmptyOrMissing(const fs::path& folder) {
    std::error_code error;
    const bool empty = fs::is_empty(folder, error);
    return error ? error == std::errc::no_such_file_or_directory : empty;
}

} // namespace

std::optional<std::string> unmountedPlaceOf(const std::string& given) {
    std::error_code error;
    const fs::path path = fs::weakly_canonical(given, error);
    if (error)
        return std::nullopt;
    std::vector<fs::path> mounted;
    for (fs::path place : mountPointsIn("/etc/fstab")) {
        if (!place.has_filename()) // of a slash at the end
            place = place.parent_path();
        if (!place.is_absolute() || !isAtOrAbove(place, path) || !isEmptyOrMissing(place))
            continue;
        if (mounted.empty())
            mounted = mountPointsIn("/proc/self/mounts");
        if (std::find(mounted.begin(), mounted.end(), place) == mounted.end())
            return place.string();
    }
    return std::nullopt;
}

} // namespace local
