#include "platform/local/change/trash.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/change/carry_out.h"
#include "platform/local/change/change_transaction.h"
#include "platform/local/library/discarded_files.h"
#include "platform/local/library/library.h"
#include "platform/local/system/clock.h"

#include <algorithm>

namespace local {

namespace {

constexpr std::int64_t beforeAnyLibrary = 1'577'836'800'000; // the year 2020

} // namespace

void moveToTrash(CatalogueConnection& connection, const std::string& numbers) {
    connection
        .statement("UPDATE asset SET trashed_at = ?2 "
                   "WHERE n IN (SELECT value FROM json_each(?1)) AND trashed_at IS NULL")
        .bind(1, numbers)
        .bind(2, millisecondsNow())
        .run();
}

std::vector<TrashedAsset> listTrash() {
    const ConnectionLease connection = Library::open()->connection();
    Statement rows = connection->statement(
        "SELECT asset.uuid, asset.filename, asset.trashed_at, asset.size FROM asset "
        "INDEXED BY asset_trash WHERE asset.trashed_at IS NOT NULL "
        "ORDER BY asset.trashed_at DESC, asset.n DESC");
    std::vector<TrashedAsset> trash;
    while (rows.step()) {
        trash.push_back({assetIdentifier(rows.bytes<Uuid>(0)), std::string(rows.text(1)),
                         rows.integer(2), rows.integer(3)});
    }
    return trash;
}

std::size_t restoreFromTrash(const std::vector<std::string>& identifiers) {
    std::size_t restored = 0;
    carryOutSteps({[&](CatalogueConnection& connection) {
        Statement restore = connection.statement(
            "UPDATE asset SET trashed_at = NULL WHERE uuid = ?1 AND trashed_at IS NOT NULL");
        for (const std::string& identifier : identifiers) {
            const auto uuid = uuidOfAssetIdentifier(identifier);
            if (!uuid)
                continue;
            restore.bindBlob(1, *uuid).run();
            restored += static_cast<std::size_t>(connection.changes());
            restore.reset();
        }
    }});
    return restored;
}

void dateImpossibleDeletions() {
    carryOutSteps({[](CatalogueConnection& connection) {
        connection
            .statement("UPDATE asset SET trashed_at = ?1 WHERE n IN (SELECT n FROM asset "
                       "INDEXED BY asset_trash WHERE trashed_at IS NOT NULL "
                       "AND trashed_at < max(added, ?2))")
            .bind(1, millisecondsNow())
            .bind(2, beforeAnyLibrary)
            .run();
    }});
}

std::size_t emptyTrash(std::int64_t before) {
    // Opened before: what is committed is no failure any more.
    const std::shared_ptr<Library> library = Library::open();
    std::size_t emptied = 0;
    carryOutSteps({[&](CatalogueConnection& connection) {
        connection
            .statement("DELETE FROM asset WHERE n IN (SELECT n FROM asset INDEXED BY asset_trash "
                       "WHERE trashed_at IS NOT NULL AND trashed_at < ?1)")
            .bind(1, before)
            .run();
        emptied = static_cast<std::size_t>(connection.changes());
    }});
    removeDiscardedFiles(*library);
    return emptied;
}

} // namespace local
