#include "platform/local/library/discarded_files.h"

#include "platform/local/library/library.h"

#include <string>
#include <vector>

namespace local {

namespace {

std::vector<std::string> discardedFiles(CatalogueConnection& connection) {
    std::vector<std::string> paths;
    // Originals and renders before derivatives: whoever makes one looks afterwards whether its
    // source is still there.
    Statement rows = connection.statement("SELECT path FROM discarded_file ORDER BY path DESC");
    while (rows.step())
        paths.emplace_back(rows.text(0));
    return paths;
}

} // namespace

void removeDiscardedFiles(Library& library) noexcept {
    try {
        const ConnectionLease connection = library.connectionForChanges();
        const std::vector<std::string> paths = discardedFiles(*connection);
        if (paths.empty())
            return;
        library.makeDurable(*connection);
        const std::vector<std::string> removed = library.files().removeDiscarded(paths);
        if (removed.empty())
            return;
        const std::unique_lock<std::mutex> lock = library.writeLock();
        WriteTransaction transaction(*connection);
        Statement forget = connection->statement("DELETE FROM discarded_file WHERE path = ?1");
        for (const std::string& path : removed) {
            forget.bind(1, path).run();
            forget.reset();
        }
        transaction.commit();
    } catch (const std::exception&) {
        // The next opening of the library tries again.
    }
}

} // namespace local
