#include "platform/local/maintenance/disk.h"

#include "platform/local/library_error.h"
#include "platform/local/unique_fd.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <sstream>
#include <string_view>

namespace local {

namespace {

constexpr std::array networkTypes{"nfs",   "nfs4", "cifs",           "smb3",       "smbfs",
                                  "afs",   "ceph", "fuse.glusterfs", "fuse.sshfs", "9p",
                                  "ocfs2", "gfs2", "fuse.rclone",    "lustre"};
constexpr std::array unguardedTypes{"vfat", "msdos", "exfat", "fuseblk", "ntfs3"};

template <class Names>
bool isOneOf(const Names& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// A line is: id, parent, device, root, mount point, options, optional fields, "-", type, source...
void findMount(int folder, Disk& disk) {
    struct statx status {};
    if (statx(folder, "", AT_EMPTY_PATH, STATX_MNT_ID, &status) != 0 ||
        (status.stx_mask & STATX_MNT_ID) == 0)
        return;
    std::ifstream mounts("/proc/self/mountinfo");
    for (std::string line; std::getline(mounts, line);) {
        std::istringstream words(line);
        std::uint64_t id = 0;
        words >> id;
        std::string word;
        while (id == status.stx_mnt_id && words >> word && word != "-") {
        }
        if (word == "-")
            words >> disk.type;
    }
}

UniqueFd namelessFile(int folder) {
    return UniqueFd(openat(folder, ".", O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
}

void tryOut(int folder, Disk& disk) {
    constexpr std::array<char, 4096> block{};
    const UniqueFd source = namelessFile(folder);
    const UniqueFd copy = namelessFile(folder);
    if (!source || !copy)
        return;
    struct flock wanted {};
    wanted.l_type = F_WRLCK;
    disk.locks =
        flock(source.get(), LOCK_EX | LOCK_NB) == 0 && fcntl(source.get(), F_SETLK, &wanted) == 0;
    if (write(source.get(), block.data(), block.size()) == static_cast<ssize_t>(block.size()))
        disk.sharesBlocks = ioctl(copy.get(), FICLONE, source.get()) == 0;
}

} // namespace

Disk diskOf(const std::string& path) {
    const UniqueFd folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct statvfs status {};
    if (!folder || fstatvfs(folder.get(), &status) != 0)
        throw systemError("The folder " + path + " could not be examined", errno);
    Disk disk;
    disk.type = "unknown";
    findMount(folder.get(), disk);
    const auto unit = static_cast<std::int64_t>(status.f_frsize);
    disk.bytes = static_cast<std::int64_t>(status.f_blocks) * unit;
    disk.freeBytes = static_cast<std::int64_t>(status.f_bavail) * unit;
    if (status.f_files > 0)
        disk.freeFiles = static_cast<std::int64_t>(status.f_favail);
    disk.readOnly = (status.f_flag & ST_RDONLY) != 0;
    disk.network = isOneOf(networkTypes, disk.type);
    disk.unguarded = isOneOf(unguardedTypes, disk.type);
    if (!disk.readOnly)
        tryOut(folder.get(), disk);
    return disk;
}

} // namespace local
