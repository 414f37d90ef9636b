#include "platform/local/catalogue/catalogue_vfs.h"

#include <sqlite3.h>

#include <fcntl.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>

namespace local {

namespace {

sqlite3_vfs* systemVfs() {
    return sqlite3_vfs_find("unix");
}

int keepPathname(sqlite3_vfs*, const char* name, int size, char* out) {
    const std::size_t length = std::strlen(name);
    if (length + 1 > static_cast<std::size_t>(size))
        return SQLITE_CANTOPEN;
    std::memcpy(out, name, length + 1);
    return SQLITE_OK;
}

thread_local int errorOfLastLock = 0;

// What SQLite locks with. A file system that cannot lock answers ENOLCK or EIO.
int controlFile(int file, int command, ...) {
    std::va_list arguments;
    va_start(arguments, command);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    const int answer = fcntl(file, command, argument);
    if (command == F_SETLK) {
        const bool othersHoldIt = errno == EAGAIN || errno == EACCES || errno == EINTR;
        errorOfLastLock = answer == -1 && !othersHoldIt ? errno : 0;
    }
    return answer;
}

// SQLite waits for a lock for up to ten seconds of its own, which is in vain where nothing can be
// locked.
int sleepFor(sqlite3_vfs*, int microseconds) {
    sqlite3_vfs* system = systemVfs();
    return errorOfLastLock != 0 ? microseconds : system->xSleep(system, microseconds);
}

} // namespace

int lockingError() noexcept {
    return errorOfLastLock;
}

const char* catalogueVfsName() {
    static sqlite3_vfs* const vfs = [] {
        sqlite3_initialize();
        systemVfs()->xSetSystemCall(systemVfs(), "fcntl",
                                    reinterpret_cast<sqlite3_syscall_ptr>(controlFile));
        // Never freed: SQLite keeps it registered until the process ends.
        auto* made = new sqlite3_vfs(*systemVfs());
        made->pNext = nullptr;
        made->zName = "photos-kit";
        made->xFullPathname = keepPathname;
        made->xSleep = sleepFor;
        sqlite3_vfs_register(made, 0);
        return made;
    }();
    return vfs->zName;
}

} // namespace local
