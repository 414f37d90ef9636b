// What can be told of a library's disk.
#include "tests/local/support.h"

#include "platform/local/maintenance/disk.h"

#include <sys/mount.h>

TEST(DiskOf, TellsTypeRoomAndWhetherItTakesWrites) {
    onSmallDisk("size=2m,nr_inodes=50", [](const ScratchHome&, const std::filesystem::path& at) {
        const local::Disk disk = local::diskOf(at.string());
        EXPECT_EQ(disk.type, "tmpfs");
        EXPECT_EQ(disk.bytes, 2 << 20);
        EXPECT_LE(disk.freeFiles.value(), 50);
        EXPECT_EQ(disk.locks, true);
        EXPECT_EQ(disk.sharesBlocks, false);
        EXPECT_FALSE(disk.readOnly || disk.network || disk.unguarded);
        EXPECT_TRUE(filesBelow(at).empty());
        ASSERT_EQ(mount("none", at.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
        EXPECT_TRUE(local::diskOf(at.string()).readOnly);
    });
}
