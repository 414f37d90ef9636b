// The files of a backup: each is copied beside its place, read back, and moved there when it is
// right.
#pragma once

#include "platform/local/maintenance/library_reader.h"

#include <functional>
#include <set>
#include <string>

namespace local {

class BackupFiles {
public:
    enum class Taken { copied, linked, missing, unreadable, damaged, stopped };

    // `backup` is the folder of the backup; borrowed.
    explicit BackupFiles(int backup) : backup_(backup) {}

    // Whether the file is there: with its size, and with `check` with all of its bytes.
    // Then its name is among those that sync() makes durable: whoever put it there may have died,
    // or met an error, before that.
    bool holds(const NamedFile& file, bool check, const std::function<bool()>& stop);

    // Takes the file from the library whose folder `library` is. What is there in its place stays
    // unless the new one is right. Throws LibraryError when the backup's own disk fails.
    Taken take(int library, const NamedFile& file, bool link, const std::function<bool()>& stop);

    // Makes the names of all that was taken, and of what was there, durable. Throws.
    void sync();

private:
    Taken copy(int source, const std::string& part) const;
    bool tryToLink(int library, const NamedFile& file, const std::string& part) const;
    void place(const NamedFile& file, const std::string& part);
    void noteFolders(const NamedFile& file);
    void setAside(const NamedFile& file, const std::string& part) const;

    int backup_;
    std::set<std::string> changed_; // folders
};

} // namespace local
