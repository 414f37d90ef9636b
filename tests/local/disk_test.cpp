// What can be told of a library's disk.
#include "tests/local/support.h"

#include "platform/local/maintenance/disk.h"

#include <sys/mount.h>

TEST(DiskOf, TellsTypeRoomAndWhetherItTakesWrites) {
    onSmallDisk("size=2m,nr_inodes=50", [](const ScratchHome&, const fs::path& at) {
        const local::Disk disk = local::diskOf(at.string());
        EXPECT_EQ(disk.type, "tmpfs");
        EXPECT_EQ(disk.bytes, 2 << 20);
        EXPECT_LE(disk.freeFiles.value(), 50);
        EXPECT_EQ(disk.locks, true);
        EXPECT_EQ(disk.sharesBlocks, false);
        EXPECT_FALSE(disk.readOnly || disk.network || disk.unguarded);
        EXPECT_TRUE(filesBelow(at).empty());
        mountAt(at, "none", MS_REMOUNT | MS_RDONLY);
        EXPECT_TRUE(local::diskOf(at.string()).readOnly);
    });
}
