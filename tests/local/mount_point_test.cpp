// A library whose disk is not mounted is not taken for one that has yet to be made.
#include "tests/local/support.h"

#include "platform/local/system/mount_points.h"

#include <sys/mount.h>
#include <unistd.h>

namespace {

// In a process of its own, with an /etc/fstab that names `place` below its home.
void withMountPoint(const fs::path& place, const std::function<void(const ScratchHome&)>& body) {
    const int outcome = inChild([&] {
        const ScratchHome home;
        const fs::path disk = home.path() / place;
        std::string named = disk.string();
        for (std::size_t at = 0; (at = named.find(' ', at)) != std::string::npos;)
            named.replace(at, 1, "\\040");
        writeText(home.file("fstab"), "# disks\nUUID=17 " + named + "/ ext4 noauto 0 2\n");
        if (!fs::exists("/etc/fstab") || !mountSmallDisk(home.file("other"), "size=1m") ||
            mount(home.file("fstab").c_str(), "/etc/fstab", nullptr, MS_BIND, nullptr) != 0)
            _exit(notPossibleHere);
        body(home);
    });
    if (outcome == notPossibleHere)
        GTEST_SKIP() << "this system does not let the test mount a disk";
    EXPECT_EQ(outcome, 0);
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
            ASSERT_EQ(mount("tmpfs", (home.path() / place).c_str(), "tmpfs", 0, "size=8m"), 0);
            EXPECT_TRUE(importFile(home.file("a.jpg")).identifier);
            EXPECT_EQ(listed().count(), 1U);
            ASSERT_EQ(umount2((home.path() / place).c_str(), MNT_DETACH), 0);
            expectNoLibrary(home);
        });
}

TEST(LibraryOnANetworkDisk, IsRefusedWithoutATrace) {
    const int outcome = inChild([] {
        const ScratchHome home;
        writeText(home.file("mounts"), "server:/homes " + home.path().string() +
                                           " nfs4 rw 0 0\n/dev/sda1 / ext4 rw 0 0\n");
        if (!mountSmallDisk(home.file("other"), "size=1m") ||
            mount(home.file("mounts").c_str(), "/proc/self/mounts", nullptr, MS_BIND, nullptr) != 0)
            _exit(notPossibleHere);
        EXPECT_THAT(importFile(home.file("a.jpg")).sentence(),
                    testing::AllOf(HasSubstr("network disk (nfs4)"), HasSubstr("backup")));
        EXPECT_FALSE(fs::exists(home.path() / "Pictures"));
    });
    if (outcome == notPossibleHere)
        GTEST_SKIP() << "this system does not let the test mount a disk";
    EXPECT_EQ(outcome, 0);
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
