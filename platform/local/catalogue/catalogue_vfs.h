// The view of the file system that SQLite gets.
#pragma once

namespace local {

// The name of the registered VFS. It is SQLite's own for this system, except that it takes paths
// as they stand: SQLite would resolve /proc/self/fd/N to the folder's real path, which it then
// refuses from 512 bytes on.
const char* catalogueVfsName();

// The errno with which the system refused this thread's last lock, unless somebody else held it;
// 0: it did not. SQLite reports both as busy, but only one of them ends by waiting.
int lockingError() noexcept;

} // namespace local
