// What a power failure would leave of a folder, for the changes that this process has made in it.
//
// The model. A file's bytes and length are durable once fsync or fdatasync of that file has
// succeeded; until then each 512-byte sector may be on the disk or not, in any order. After a sync
// that failed, nothing that it covered becomes durable by a later one; it has to be written again.
// A name (made, removed or renamed) is durable once fsync of its folder has succeeded; until then
// it may be on the disk or not, in the order of the changes within one folder, but independently of
// other folders and of the files' bytes. A rename between folders happens as a whole, has its place
// in the order of both, and is durable once either was synced. This is what POSIX grants, less than
// what ext4, XFS and Btrfs do: their journals keep the order of changes between folders as well.
// The shared memory of SQLite (library.db-shm) does not outlive the power.
//
// Not thread-safe: the caller holds one lock over an operation and what it notes here.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace faults {

// A name that is made or removed, or that a file gets by a rename.
struct NameChange {
    std::string path;
    std::string from{}; // of a rename
    // The rest is noted here.
    std::string aside{};       // a second name of the file that lost its name
    bool wasFolder = false;    // a folder had the name
    ino_t inode = 0;           // of what has the name now
    std::set<ino_t> folders{}; // that it is a change of
};

class PowerCut {
public:
    void begin(const std::string& folder, const std::string& shadow);

    // Before these bytes of an open file are overwritten or cut off.
    void willWrite(int file, off_t from, off_t end);
    // After a sync of an open file or folder.
    void synced(int file, bool good);

    // Before and after a name is made, removed or renamed.
    void willChange(NameChange& change);
    void changed(NameChange change);

    // Back to what is durable; or, torn, to that and a random part of the rest.
    void fail(bool torn, std::uint64_t seed);

private:
    struct File {
        int descriptor = -1; // ours
        std::string durable;
        std::set<std::size_t> lost; // sectors that a sync failed to write; since then unwritten
    };

    void undo(const NameChange& change) const;

    std::string folder_, shadow_;
    std::uint64_t aside_ = 0;
    std::map<ino_t, File> files_; // that were written
    std::vector<NameChange> names_;
};

PowerCut& powerCut();

} // namespace faults
