// Several processes move, make and delete folders in one tree at once, which no host can do through
// its own methods: those only file what they have just made.
#include "tests/local/support.h"

#include <iterator>
#include <random>
#include <sstream>

namespace {

// Any folder into any other, so that many a move would close a circle: each may be refused. What
// is deleted may be where another process is just filing something.
void moveAround(const std::vector<std::string>& folders, unsigned seed) {
    std::mt19937 random(seed);
    const auto any = [&] {
        return fetchCollectionListsWithLocalIdentifiers({folders[random() % folders.size()]});
    };
    for (int step = 0; step < 250; ++step) {
        const auto child = any();
        const auto parent = any();
        if (child.count() == 0 || parent.count() == 0)
            continue;
        std::vector<PHCollection> children{*child.objectAtIndex(0)};
        if (step % 10 == 0)
            children = {album(newAlbum("made"))};
        change([&] {
            addChildCollections(*changeRequestForCollectionList(*parent.objectAtIndex(0)),
                                children);
        });
        if (step > 150 && step % 50 == 9)
            change([&] { deleteCollectionLists(child); });
    }
}

} // namespace

TEST(SharedTree, StaysOneTreeWhenSeveralProcessesMoveFolders) {
    const ScratchHome home;
    inChild([&] { // whoever forks must not have the library open
        std::string lines;
        for (int i = 0; i < 8; ++i)
            lines += newFolder(std::to_string(i)) + '\n';
        writeText(home.file("folders"), lines);
    });
    std::istringstream lines(readBytes(home.file("folders")));
    const std::vector<std::string> folders{std::istream_iterator<std::string>(lines), {}};
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    inProcesses(3, [&](int number) { moveAround(folders, seed + static_cast<unsigned>(number)); });
    expectConsistent(home);
}
