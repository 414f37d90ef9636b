#include "platform/local/maintenance/disk.h"

#include "platform/local/system/library_error.h"
#include "platform/local/system/mount_points.h"
#include "platform/local/system/unique_fd.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>

namespace local {

namespace {

constexpr std::array<std::string_view, 5> unguardedTypes{"vfat", "msdos", "exfat", "fuseblk",
                                                         "ntfs3"};

UniqueFd namelessFile(int folder) {
    return UniqueFd(openat(folder, ".", O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
}

void tryOut(int folder, Disk& disk) {
    constexpr std::array<char, 4096> block{};
    const UniqueFd source = namelessFile(folder);
    const UniqueFd copy = namelessFile(folder);
    if (!source || !copy)
        return;
    struct flock wanted = {};
    wanted.l_type = F_WRLCK;
    disk.locks =
        flock(source.get(), LOCK_EX | LOCK_NB) == 0 && fcntl(source.get(), F_SETLK, &wanted) == 0;
    if (write(source.get(), block.data(), block.size()) == static_cast<ssize_t>(block.size()))
        disk.sharesBlocks = ioctl(copy.get(), FICLONE, source.get()) == 0;
}

} // namespace

Disk diskOf(const std::string& path) {
    const UniqueFd folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct statvfs status = {};
    if (!folder || fstatvfs(folder.get(), &status) != 0)
        throw systemError("The folder " + path + " could not be examined", errno);
    Disk disk;
    disk.type = fileSystemTypeOf(path);
    const auto unit = static_cast<std::int64_t>(status.f_frsize);
    disk.bytes = static_cast<std::int64_t>(status.f_blocks) * unit;
    disk.freeBytes = static_cast<std::int64_t>(status.f_bavail) * unit;
    if (status.f_files > 0)
        disk.freeFiles = static_cast<std::int64_t>(status.f_favail);
    disk.readOnly = (status.f_flag & ST_RDONLY) != 0;
    disk.network = isNetworkType(disk.type);
    disk.unguarded =
        std::find(unguardedTypes.begin(), unguardedTypes.end(), disk.type) != unguardedTypes.end();
    if (!disk.readOnly)
        tryOut(folder.get(), disk);
    return disk;
}

} // namespace local
