// A library opened to be looked at: nothing is made, migrated, swept or folded into the catalogue.
// Works on a disk that takes no writes, and while hosts are at work.
#pragma once

#include "platform/local/catalogue/catalogue_connection.h"
#include "platform/local/store/file_store.h"
#include "platform/local/system/unique_fd.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace local {

// A file that the catalogue names.
struct NamedFile {
    std::int64_t asset = 0; // its n
    Uuid uuid{};
    Stored kind = Stored::original;
    std::string name;
    ContentHash hash{};
    std::int64_t size = 0;

    std::string identifier() const; // the asset's
    std::string path() const;       // in the library; throws like pathOf
};

class LibraryReader {
public:
    // `path` is a library's folder. Throws LibraryError when there is none, or when its catalogue
    // is of another version than this code's.
    explicit LibraryReader(const std::string& path);

    CatalogueConnection& catalogue() { return *catalogue_; }
    const FileStore& files() const { return files_; }
    int folder() const { return folder_.get(); }

    // The files of the assets that follow the row `after`, a few hundred assets at most, in the
    // order of rows; empty at the end. Holds no snapshot between calls.
    std::vector<NamedFile> filesAfter(std::int64_t after);
    std::int64_t countFiles();

    // Whether the catalogue still names it, with this very content.
    bool stillNames(const NamedFile& file);
    // Whether any row names the file `name` of this kind, or a row that is gone did.
    bool namesFile(Stored kind, const std::string& name);
    bool isDiscarded(const std::string& path);

private:
    UniqueFd folder_;
    FileStore files_;
    std::unique_ptr<CatalogueConnection> catalogue_;
};

} // namespace local
