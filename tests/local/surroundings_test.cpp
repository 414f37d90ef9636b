// What can be told of a library's disk and of the processes that use it.
#include "tests/local/support.h"

#include "platform/local/maintenance/disk.h"
#include "platform/local/maintenance/library_users.h"
#include "platform/local/system/unique_fd.h"
#include "platform/photo_library.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace support;

namespace {

// A process that has done `work` and waits until it is ended.
class Neighbour {
public:
    explicit Neighbour(const std::function<void()>& work) {
        int ready[2];
        EXPECT_EQ(pipe(ready), 0);
        process_ = fork();
        if (process_ == 0) {
            work();
            EXPECT_EQ(write(ready[1], "x", 1), 1);
            pause();
            _exit(0);
        }
        char nothing = 0;
        EXPECT_EQ(read(ready[0], &nothing, 1), 1);
        close(ready[0]);
        close(ready[1]);
    }
    ~Neighbour() {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    pid_t process() const { return process_; }

private:
    pid_t process_ = 0;
};

std::vector<local::LibraryUser> users(const ScratchHome& home) {
    return local::usersOf(home.library().string());
}

} // namespace

TEST(LibraryUsers, AreNamedWithWhatTheyHold) {
    const ScratchHome home;
    ASSERT_EQ(inChild([] { listed(); }), 0);
    EXPECT_TRUE(users(home).empty());
    const Neighbour reader([] { listed(); });
    {
        const Neighbour writer([&] {
            static local::UniqueFd folder(open(home.library().c_str(), O_RDONLY | O_DIRECTORY));
            static local::CatalogueConnection connection(
                folder.get(), local::CatalogueConnection::Mode::readWrite);
            connection.execute("BEGIN IMMEDIATE");
            const auto marker = home.library() / "incoming" / "x.importing";
            static local::UniqueFd held(open(marker.c_str(), O_RDWR | O_CREAT, 0600));
            EXPECT_EQ(flock(held.get(), LOCK_EX), 0);
        });
        const auto found = users(home);
        ASSERT_EQ(found.size(), 2U);
        for (const local::LibraryUser& user : found) {
            const bool writes = user.process == writer.process();
            EXPECT_EQ(user.writes, writes);
            EXPECT_EQ(user.files, writes ? 1U : 0U);
            EXPECT_EQ(user.program, "local_tests");
        }
        // Looking has dropped nobody's locks.
        EXPECT_EQ(users(home).size(), 2U);
    }
    const auto left = users(home);
    ASSERT_EQ(left.size(), 1U);
    EXPECT_EQ(left.front().process, reader.process());
    EXPECT_FALSE(left.front().writes);
}

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
