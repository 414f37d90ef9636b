#include "platform/local/system/mount_points.h"

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

constexpr std::array networkTypes{"nfs",   "nfs4",  "cifs",           "smb3",       "smbfs",
                                  "afs",   "ceph",  "fuse.glusterfs", "fuse.sshfs", "9p",
                                  "ocfs2", "gfs2",  "fuse.rclone",    "lustre",     "davfs",
                                  "coda",  "ncpfs", "fuse.davfs2",    "fuse.s3fs"};

struct Mount {
    fs::path place;
    std::string type;
};

std::vector<Mount> mountsIn(const char* table) {
    std::vector<Mount> mounts;
    const std::unique_ptr<std::FILE, CloseTable> file(setmntent(table, "re"));
    mntent entry{};
    std::array<char, 8192> text{};
    while (file && getmntent_r(file.get(), &entry, text.data(), static_cast<int>(text.size())))
        mounts.push_back({fs::path(entry.mnt_dir).lexically_normal(), entry.mnt_type});
    return mounts;
}

bool leadsThrough(const fs::path& path, const fs::path& folder) {
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
    std::vector<Mount> mounted;
    for (auto& [place, type] : mountsIn("/etc/fstab")) {
        if (!place.has_filename()) // of a slash at the end
            place = place.parent_path();
        if (!place.is_absolute() || !leadsThrough(path, place) || !isEmptyOrMissing(place))
            continue;
        if (mounted.empty())
            mounted = mountsIn("/proc/self/mounts");
        const bool isMounted =
            std::any_of(mounted.begin(), mounted.end(),
                        [&at = place](const Mount& mount) { return mount.place == at; });
        if (!isMounted)
            return place.string();
    }
    return std::nullopt;
}

std::string fileSystemTypeOf(const std::string& given) {
    std::error_code error;
    const fs::path path = fs::weakly_canonical(given, error);
    std::string type = "unknown";
    std::size_t longest = 0;
    for (const Mount& mount : mountsIn("/proc/self/mounts")) {
        const std::size_t length = mount.place.native().size();
        // Of two at one place the later one hides the other.
        if (error || length < longest || !leadsThrough(path, mount.place))
            continue;
        longest = length;
        type = mount.type;
    }
    return type;
}

bool isNetworkType(std::string_view type) {
    return std::find(networkTypes.begin(), networkTypes.end(), type) != networkTypes.end();
}

} // namespace local
