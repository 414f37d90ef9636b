// Several processes move, make and delete folders in one tree at once, which no host can do through
// its own methods: those only file what they have just made.
#include "tests/local/collections_support.h"

#include "platform/collection_change_requests.h"
#include "platform/photo_library.h"

#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

using namespace support;
using namespace platform;

namespace {

constexpr unsigned processes = 3;
constexpr int steps = 150;
constexpr int folderCount = 8;

PHFetchResult<PHCollectionList> anyOf(const std::vector<std::string>& folders,
                                      std::mt19937& random) {
    return fetchCollectionListsWithLocalIdentifiers({folders[random() % folders.size()]});
}

std::string fileInto(const PHFetchResult<PHCollectionList>& parent, const PHCollection& child) {
    return change([&] {
        addChildCollections(*changeRequestForCollectionList(*parent.objectAtIndex(0)), {child});
    });
}

enum class Deletions { none, some };

// Any folder into any other, so that many a move would close a circle: each may be refused. What
// is deleted may be where another process is just filing something.
void moveAround(const std::vector<std::string>& folders, unsigned seed, Deletions deletions) {
    std::mt19937 random(seed);
    int moves = 0;
    for (int step = 0; step < steps; ++step) {
        const auto child = anyOf(folders, random);
        const auto parent = anyOf(folders, random);
        if (child.count() == 0 || parent.count() == 0)
            continue;
        if (fileInto(parent, *child.objectAtIndex(0)).empty())
            ++moves;
        if (step % 10 == 0)
            fileInto(parent, album(newAlbum("made")));
        if (deletions == Deletions::some && step % 50 == 9)
            change([&] { deleteCollectionLists(child); });
    }
    EXPECT_TRUE(moves > 0 || deletions == Deletions::some);
}

// Starts `body` in a process of its own as soon as `go` is closed.
pid_t startAtOnce(const int (&go)[2], const std::function<void()>& body) {
    const pid_t child = fork();
    if (child != 0)
        return child;
    close(go[1]);
    char nothing = 0;
    if (read(go[0], &nothing, 1) == 0)
        body();
    _exit(testing::Test::HasFailure() ? 1 : 0);
}

void moveAroundTogether(const std::vector<std::string>& folders, Deletions deletions) {
    const unsigned seed = std::random_device{}();
    int go[2];
    ASSERT_EQ(pipe(go), 0);
    std::vector<pid_t> children;
    for (unsigned i = 0; i < processes; ++i)
        children.push_back(startAtOnce(go, [&] { moveAround(folders, seed + i, deletions); }));
    close(go[1]);
    for (const pid_t child : children) {
        int outcome = -1;
        waitpid(child, &outcome, 0);
        EXPECT_EQ(outcome, 0) << "seed " << seed;
    }
    close(go[0]);
}

} // namespace

TEST(SharedTree, StaysOneTreeWhenSeveralProcessesMoveFolders) {
    const ScratchHome home;
    // Whoever forks must not have the library open.
    ASSERT_EQ(inChild([&] {
                  authorizationStatusForAccessLevel(2);
                  std::string lines;
                  for (int i = 0; i < folderCount; ++i)
                      lines += newFolder(std::to_string(i)) + '\n';
                  writeText(home.file("folders"), lines);
              }),
              0);
    std::istringstream lines(readBytes(home.file("folders")));
    const std::vector<std::string> folders{std::istream_iterator<std::string>(lines), {}};
    ASSERT_EQ(folders.size(), std::size_t{folderCount});

    moveAroundTogether(folders, Deletions::none);
    EXPECT_EQ(sqlInteger(home, "SELECT count(*) FROM collection WHERE kind = 2"), folderCount);
    EXPECT_EQ(sqlInteger(home, "SELECT count(*) FROM collection WHERE kind = 2 AND parent IS NULL"),
              1);
    expectConsistent(home);
    moveAroundTogether(folders, Deletions::some);
    expectConsistent(home);
}
