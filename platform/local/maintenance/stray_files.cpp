#include "platform/local/maintenance/stray_files.h"
#include "platform/local/system/folder_names.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

namespace local {

namespace {

std::string lockFileOf(Stored kind, const std::string& name) {
    return "incoming/" + name + std::string(lockFileEnding(kind));
}

// Throws when nobody can tell.
bool exists(int folder, const std::string& path) {
    if (faccessat(folder, path.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0)
        return true;
    if (errno != ENOENT)
        throw systemError("The disk does not tell whether it is there", errno);
    return false;
}

// Asked in this order, because an importer names the file before it takes its lock file away.
bool isAccountedFor(LibraryReader& reader, Stored kind, const std::string& name) {
    return reader.namesFile(kind, name) || exists(reader.folder(), lockFileOf(kind, name)) ||
           reader.namesFile(kind, name);
}

// What cannot be listed is a finding: nobody knows what lies in it.
std::vector<std::string> listed(LibraryReader& reader, const std::string& path,
                                Verification& result) {
    int error = 0;
    std::vector<std::string> names = namesIn(reader.folder(), path, &error);
    if (error != 0 && error != ENOENT)
        result.findings.push_back({Finding::Kind::unreadable, path, "",
                                   systemError("The folder could not be listed", error).what()});
    return names;
}

void lookAt(LibraryReader& reader, Stored kind, const std::string& path, const std::string& name,
            Verification& result) {
    const bool inItsPlace =
        path == std::string(folderOf(kind)) + "/" + name.substr(0, 2) + "/" + name;
    if (inItsPlace && isAccountedFor(reader, kind, name))
        return;
    if (reader.isDiscarded(path))
        ++result.leftOver;
    else if (exists(reader.folder(), path))
        result.findings.push_back(
            {Finding::Kind::unnamed, path, "", "Nothing in the catalogue names it."});
}

void lookThroughShelf(LibraryReader& reader, Stored kind, const std::string& shelf,
                      Verification& result) {
    const std::string folder = std::string(folderOf(kind)) + "/" + shelf;
    for (const std::string& name : listed(reader, folder, result)) {
        const std::string path = std::string(folder).append("/").append(name);
        try {
            lookAt(reader, kind, path, name, result);
        } catch (const LibraryError& failure) {
            if (failure.error().domain != posixErrorDomain)
                throw;
            result.findings.push_back({Finding::Kind::unreadable, path, "", failure.what()});
        }
    }
}

// A lock file that nobody holds, or an editing folder of a process that died.
bool isLeftOver(int library, const std::string& path) {
    const UniqueFd entry(openat(library, path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    return entry && flock(entry.get(), LOCK_EX | LOCK_NB) == 0;
}

void lookThroughIncoming(LibraryReader& reader, Verification& result) {
    for (const std::string& name : listed(reader, "incoming", result)) {
        const std::string path = "incoming/" + name;
        if (uuidFromText(std::string_view(name).substr(0, 36)))
            result.leftOver += isLeftOver(reader.folder(), path) ? 1 : 0;
        else
            result.findings.push_back(
                {Finding::Kind::unnamed, path, "", "It is none of the library's own files."});
    }
}

} // namespace

bool isUnnamed(LibraryReader& reader, Stored kind, const std::string& name) {
    const std::string path = std::string(folderOf(kind)) + "/" + name.substr(0, 2) + "/" + name;
    return !isAccountedFor(reader, kind, name) && !reader.isDiscarded(path);
}

void findStrayFiles(LibraryReader& reader, Verification& result) {
    for (const Stored kind : {Stored::original, Stored::render}) {
        for (const std::string& shelf : listed(reader, std::string(folderOf(kind)), result)) {
            if (shelf != sentinelName)
                lookThroughShelf(reader, kind, shelf, result);
        }
    }
    lookThroughIncoming(reader, result);
}

} // namespace local
