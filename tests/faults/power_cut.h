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
#include <random>
#include <set>
#include <string>
#include <vector>

namespace faults {

class PowerCut {
public:
    void begin(const std::string& folder, const std::string& shadow);

    // Before bytes of an open file are overwritten, or its length is changed to `size`.
    void willWrite(int file, off_t offset, std::size_t size);
    void willTruncate(int file, off_t size);
    // After a sync of an open file or folder.
    void synced(int file);
    void syncFailed(int file);

    // After a name was made; before and after one is removed; likewise for a rename.
    void made(const std::string& path);
    std::string keepAside(const std::string& path); // a second name for what is about to lose its
    void removed(const std::string& path, const std::string& aside, bool folder);
    void renamed(const std::string& from, const std::string& to, const std::string& aside);

    // Back to what is durable; or to that and a random part of the rest.
    void drop();
    void tear(std::uint64_t seed);

private:
    struct File {
        int descriptor = -1; // ours
        off_t durableSize = 0;
        std::map<off_t, std::string> durableSectors; // by number; those changed since the last sync
        std::set<off_t> lost;                        // of them, those that a failed sync covered
    };
    struct NameChange {
        std::string path;    // the new one of a rename
        std::string from;    // of a rename
        std::string aside;   // what lost its name
        bool folder = false; // a removed one
        ino_t inode = 0;     // of what was made or renamed
        ino_t place = 0;     // the folder that `path` is in
        ino_t fromPlace = 0;
    };

    File* fileOf(int file);
    void keepSectors(File& file, off_t offset, off_t end);
    static void restore(File& file, const std::set<off_t>& sectors, off_t size);
    void undo(const NameChange& change);
    void undoSome(std::mt19937_64& random);
    void dropSharedMemory();

    std::string folder_, shadow_;
    std::uint64_t aside_ = 0;
    std::map<ino_t, File> files_;
    std::vector<NameChange> names_;
};

PowerCut& powerCut();

} // namespace faults
