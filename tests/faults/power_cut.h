// What a power failure would leave of the files that this process has changed.
//
// The model. A file's bytes and length are durable once fsync or fdatasync of that file has
// succeeded; until then each 512-byte sector may be on the disk or not, in any order. After a sync
// that failed, nothing that it covered becomes durable by a later one; it has to be written again.
// A name (made, removed or renamed) is durable once fsync of its folder has succeeded; until then
// it may be on the disk or not, in the order of the changes within one folder, but independently of
// other folders and of the files' bytes. A rename between folders happens as a whole, has its place
// in the order of both, and is durable once either was synced. This is what POSIX grants, less than
// what ext4, XFS and Btrfs do: their journals keep the order of changes between folders as well.
//
// Not thread-safe: the caller holds one lock over an operation and what it notes here.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>

namespace faults {

// `shadow` is a folder for files that lose their names.
void beginNoting(const std::string& shadow);

// Before these bytes of an open file are overwritten or cut off.
void noteWrite(int file, off_t from, off_t end);
// After a sync of an open file or folder.
void noteSync(int file, bool good);
// Over a change by which `path` is made, removed, or what was at `from` before; a system call's
// answer.
long noteName(const std::string& path, const std::string& from,
              const std::function<long()>& change);

// Back to what is durable; or, torn, to that and a random part of the rest.
void failPower(bool torn, std::uint64_t seed);

} // namespace faults
