// photos-kit doctor: the library's place, its disk, and who uses it.
#include "platform/local/maintenance/disk.h"
#include "platform/local/maintenance/library_reader.h"
#include "platform/local/system/library_error.h"
#include "tool/examination.h"
#include "tool/library_users.h"
#include "tool/text.h"

#include <sys/stat.h>

#include <cstdlib>

namespace tool {

namespace {

constexpr std::int64_t littleRoom = 1'000'000'000;
constexpr std::int64_t fewFiles = 10'000;

bool isThere(const std::string& path) {
    struct stat file = {};
    return lstat(path.c_str(), &file) == 0;
}

std::string yesOrNo(std::optional<bool> answer) {
    return !answer ? "not known" : *answer ? "yes" : "no";
}

Json jsonOf(std::optional<bool> answer) {
    return answer ? Json(*answer) : Json();
}

void openLibrary(Examination& all, Section& section, const std::string& path) {
    try {
        local::LibraryReader library(path);
        const std::int64_t version = library.catalogue().integer("PRAGMA user_version");
        section.add("Catalogue", "catalogueVersion", version, "version " + std::to_string(version));
        for (const auto kind : {local::Stored::original, local::Stored::render}) {
            const std::string folder(local::folderOf(kind));
            const bool present = library.files().isPresent(kind);
            section.add("  " + folder, folder, present, present ? "there" : "not there");
            if (!present)
                all.warnings.push_back("The library's folder " + folder +
                                       " is not there: perhaps its disk is not mounted.");
        }
    } catch (const local::LibraryError& failure) {
        all.warnings.emplace_back(failure.what());
    }
}

void warnOfDisk(Examination& all, const local::Disk& disk) {
    if (disk.readOnly)
        all.warnings.emplace_back("The disk takes no writes: the library can only be looked at.");
    else if (disk.freeBytes < littleRoom)
        all.warnings.push_back(
            "There is little room left on the disk: " + sizeText(disk.freeBytes) + ".");
    if (disk.freeFiles.value_or(fewFiles) < fewFiles)
        all.warnings.push_back("The disk has room for only " + std::to_string(*disk.freeFiles) +
                               " more files.");
    if (disk.network)
        all.warnings.emplace_back("The disk is another machine's. Only one machine at a time may "
                                  "use the library: SQLite's log cannot be shared between two.");
    if (disk.unguarded)
        all.warnings.emplace_back("The disk keeps no owners: other users of this machine may be "
                                  "able to read the library.");
    if (disk.locks == false)
        all.warnings.emplace_back("The disk does not keep locks, without which the library cannot "
                                  "be used.");
}

} // namespace

void examinePlace(Examination& all, const std::string& library) {
    Section& section = all.begin("Library", "library");
    const char* home = std::getenv("HOME");
    const bool usual = library.starts_with(std::string(home ? home : "") + "/Pictures/");
    section.add("Folder", "path", library);
    section.add("  because", "reason",
                usual ? "it is in the usual pictures folder"
                      : "~/.config/user-dirs.dirs names its pictures folder");
    const bool there = isThere(library);
    section.add("  exists", "exists", there, there ? "yes" : "no; the first import makes it");
    if (there)
        openLibrary(all, section, library);
}

void examineDisk(Examination& all, const std::string& library) {
    std::string folder = library;
    while (folder.size() > 1 && !isThere(folder))
        folder.resize(std::max<std::size_t>(folder.find_last_of('/'), 1));
    Section& section = all.begin("Disk", "disk");
    try {
        const local::Disk disk = local::diskOf(folder);
        section.add("File system", "type", disk.type);
        section.add("Room", "bytes", disk.bytes, sizeText(disk.bytes));
        section.add("  free", "freeBytes", disk.freeBytes, sizeText(disk.freeBytes));
        section.add("  more files", "freeFiles", disk.freeFiles ? Json(*disk.freeFiles) : Json(),
                    disk.freeFiles ? std::to_string(*disk.freeFiles) : "no limit known");
        section.add("Takes writes", "writable", !disk.readOnly, yesOrNo(!disk.readOnly));
        section.add("Keeps locks", "locks", jsonOf(disk.locks), yesOrNo(disk.locks));
        section.add("Imports share room", "sharesBlocks", jsonOf(disk.sharesBlocks),
                    yesOrNo(disk.sharesBlocks));
        warnOfDisk(all, disk);
    } catch (const local::LibraryError& failure) {
        all.warnings.emplace_back(failure.what());
    }
}

void examineUsers(Examination& all, const std::string& library) {
    Section& section = all.begin("Open in", "processes");
    try {
        for (const auto& [process, user] : usersOf(library)) {
            std::string text = user.program + (user.writes ? ", writes" : "");
            if (user.files > 0)
                text += ", has " +
                        countText(static_cast<std::int64_t>(user.files), "file", "files") +
                        " in work";
            const std::string number = std::to_string(process);
            section.add(number, number,
                        Json{{"program", user.program},
                             {"writes", user.writes},
                             {"filesInWork", user.files}},
                        text);
        }
    } catch (const Failure& failure) {
        all.warnings.emplace_back(failure.what());
    }
}

} // namespace tool
