// Disks: one that is not mounted is not taken for a library that has yet to be made.
#include "tests/local/support.h"

#include <sys/mount.h>

#include <regex>

namespace {

// In a process of its own, with an /etc/fstab that names `place` below its home.
void withMountPoint(const fs::path& place, const std::function<void(const ScratchHome&)>& body) {
    withOwnMounts([&] {
        const ScratchHome home;
        const std::string named =
            std::regex_replace((home.path() / place).string(), std::regex(" "), "\\040");
        writeText(home.file("fstab"), "# disks\nUUID=17 " + named + "/ ext4 noauto 0 2\n");
        mountAt("/etc/fstab", home.file("fstab"), MS_BIND);
        body(home);
    });
}

void expectNoLibrary(const ScratchHome& home) {
    EXPECT_THAT(importFile(home.file("a.jpg")).sentence(), HasSubstr("is not mounted"));
    EXPECT_EQ(listed().count(), 0U);
    EXPECT_FALSE(fs::exists(home.library() / "library.db"));
}

} // namespace

TEST(UnmountedLibrary, IsNotMadeInItsOwnMountPointUntilTheDiskIsThere) {
    for (const char* const place : {"Pictures/Lumatrice Library", "Pictures"})
        withMountPoint(place, [&](const ScratchHome& home) {
            writePicture(home.file("a.jpg"));
            expectNoLibrary(home);
            EXPECT_FALSE(fs::exists(home.library()));
            fs::create_directories(home.path() / place);
            expectNoLibrary(home);
            EXPECT_TRUE(fs::is_empty(home.path() / place));
            mountAt(home.path() / place, "tmpfs", 0, "size=8m");
            EXPECT_TRUE(importFile(home.file("a.jpg")).identifier);
            EXPECT_EQ(listed().count(), 1U);
            ASSERT_EQ(umount2((home.path() / place).c_str(), MNT_DETACH), 0);
            expectNoLibrary(home);
        });
}

TEST(LibraryOnANetworkDisk, IsRefusedWithoutATrace) {
    withOwnMounts([] {
        const ScratchHome home;
        writeText(home.file("mounts"), "server:/homes " + home.path().string() +
                                           " nfs4 rw 0 0\n/dev/sda1 / ext4 rw 0 0\n");
        mountAt("/proc/self/mounts", home.file("mounts"), MS_BIND);
        EXPECT_THAT(importFile(home.file("a.jpg")).sentence(),
                    testing::AllOf(HasSubstr("network disk (nfs4)"), HasSubstr("backup")));
        EXPECT_FALSE(fs::exists(home.path() / "Pictures"));
    });
}

// Tables of mount points are copied to machines and containers that have no such disks.
TEST(UnmountedLibrary, AMountPointWithFilesInItIsAFolderLikeOthers) {
    withMountPoint("Pictures", [](const ScratchHome& home) {
        fs::create_directories(home.path() / "Pictures");
        writePicture(home.path() / "Pictures" / "a.jpg");
        EXPECT_TRUE(importFile(home.path() / "Pictures" / "a.jpg").identifier);
    });
    withMountPoint("elsewhere", [](const ScratchHome& home) {
        fs::create_directories(home.library()); // empty, the user's own
        EXPECT_TRUE(importFile(writePicture(home.file("a.jpg"))).identifier);
    });
}
