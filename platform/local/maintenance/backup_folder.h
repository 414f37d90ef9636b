// The folder of a backup: whether it may be written to, and its catalogue, old and new.
//
// A backup is told from a library by the file "backup.state" in it. That also keeps the hash of the
// catalogue, so that a backup that was put to use as a library, and changed, is never overwritten.
#pragma once

#include "platform/local/system/unique_fd.h"

#include <string>
#include <vector>

namespace local {

// Where the new catalogue grows, in the folder of the backup.
inline constexpr const char* nextCatalogueFolder = "next-catalogue";

class BackupFolder {
public:
    // Makes the folder where it is missing and holds it, so that no second process backs up into
    // it. `library` is the folder of the library. Throws LibraryError with the reason when the
    // folder holds something else, lies inside the library or holds it, or is being used.
    BackupFolder(const std::string& path, int library);

    int descriptor() const { return folder_.get(); }
    // Whether an earlier backup was completed.
    bool holdsCatalogue() const;

    // Makes the empty folder for the next catalogue; what an interrupted backup left there goes.
    UniqueFd beginCatalogue() const;
    // The next catalogue, which nobody has open, becomes the catalogue. Throws when somebody has
    // the old one open.
    void publish();

private:
    void requirePlace(int library) const;
    void requireOurs();
    void makeNameDurable() const;
    void requireUnchanged() const;
    void writeState(const std::vector<std::string>& catalogues) const;

    std::string path_;
    UniqueFd folder_;
    UniqueFd state_; // locked
};

} // namespace local
