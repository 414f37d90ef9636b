#include "platform/local/change/revert.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/change/carry_out.h"
#include "platform/local/change/edits.h"
#include "platform/local/library/discarded_files.h"
#include "platform/local/library/library.h"

namespace local {

std::size_t revertEdits(const std::vector<std::string>& identifiers) {
    // Opened before: what is committed is no failure any more.
    const std::shared_ptr<Library> library = Library::open();
    std::size_t reverted = 0;
    carryOutSteps({[&](CatalogueConnection& connection) {
        Statement edited = connection.statement(
            "SELECT n FROM asset WHERE uuid = ?1 AND edited = 1 AND trashed_at IS NULL");
        for (const std::string& identifier : identifiers) {
            edited.reset();
            const auto uuid = uuidOfAssetIdentifier(identifier);
            if (!uuid || !edited.bindBlob(1, *uuid).step())
                continue;
            dropEdit(connection, edited.integer(0));
            ++reverted;
        }
    }});
    removeDiscardedFiles(*library);
    return reverted;
}

} // namespace local
