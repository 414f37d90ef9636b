#include "platform/local/catalogue_vfs.h"

#include <sqlite3.h>

#include <cstring>

namespace local {

namespace {

sqlite3_vfs* systemVfs() {
    return sqlite3_vfs_find("unix");
}

int openFile(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags) {
    sqlite3_vfs* system = systemVfs();
    return system->xOpen(system, name, file, flags, outFlags);
}

int keepPathname(sqlite3_vfs*, const char* name, int size, char* out) {
    const std::size_t length = std::strlen(name);
    if (length + 1 > static_cast<std::size_t>(size))
        return SQLITE_CANTOPEN;
    std::memcpy(out, name, length + 1);
    return SQLITE_OK;
}

int deleteFile(sqlite3_vfs*, const char* name, int syncFolder) {
    sqlite3_vfs* system = systemVfs();
    return system->xDelete(system, name, syncFolder);
}

int accessFile(sqlite3_vfs*, const char* name, int flags, int* result) {
    sqlite3_vfs* system = systemVfs();
    return system->xAccess(system, name, flags, result);
}

} // namespace

const char* catalogueVfsName() {
    static sqlite3_vfs* const vfs = [] {
        sqlite3_initialize();
        // Never freed: SQLite keeps it registered until the process ends.
        auto* made = new sqlite3_vfs(*systemVfs());
        made->pNext = nullptr;
        made->zName = "photos-kit";
        made->xOpen = openFile;
        made->xFullPathname = keepPathname;
        made->xDelete = deleteFile;
        made->xAccess = accessFile;
        sqlite3_vfs_register(made, 0);
        return made;
    }();
    return vfs->zName;
}

} // namespace local
