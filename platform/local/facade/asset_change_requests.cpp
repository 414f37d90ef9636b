// Marks on assets, and their deletion: steps of the write transaction, each one or two statements
// however many assets it is about.
#include "platform/asset_change_requests.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/change/change_transaction.h"
#include "platform/local/change/trash.h"
#include "platform/local/fetch/row_numbers.h"
#include "platform/local/system/guarded.h"

#include <algorithm>

namespace local {

namespace {

// In the catalogue's own order, each once.
std::string sortedNumbers(std::vector<std::int64_t> numbers) {
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return jsonArray(numbers);
}

void requireAll(CatalogueConnection& connection, const std::string& numbers) {
    Statement missing = connection.statement(
        "SELECT 1 FROM json_each(?1) AS wanted LEFT JOIN asset ON asset.n = wanted.value "
        "WHERE asset.n IS NULL OR asset.trashed_at IS NOT NULL LIMIT 1");
    if (missing.bind(1, numbers).step())
        throw LibraryError(platform::PHPhotosErrorDomain, invalidResourceCode,
                           "An asset no longer exists; nothing was changed.");
}

void setFavorites(CatalogueConnection& connection, const std::string& numbers, bool favorite) {
    const char* const sql =
        favorite ? "INSERT OR IGNORE INTO favorite SELECT asset.created, asset.n "
                   "FROM json_each(?1) AS wanted CROSS JOIN asset ON asset.n = wanted.value"
                 : "DELETE FROM favorite WHERE (created, asset) IN (SELECT asset.created, asset.n "
                   "FROM json_each(?1) AS wanted CROSS JOIN asset ON asset.n = wanted.value)";
    connection.statement(sql).bind(1, numbers).run();
}

void setHiddenMarks(CatalogueConnection& connection, const std::string& numbers, bool hidden) {
    connection
        .statement("UPDATE asset SET hidden = ?2 WHERE n IN (SELECT value FROM json_each(?1)) "
                   "AND hidden <> ?2")
        .bind(1, numbers)
        .bind(2, std::int64_t{hidden})
        .run();
}

void carryOut(CatalogueConnection& connection, const MarkWish& wish) {
    const std::string numbers = sortedNumbers(wish.assets);
    requireAll(connection, numbers);
    if (wish.mark == MarkWish::Mark::favorite)
        setFavorites(connection, numbers, wish.value);
    else
        setHiddenMarks(connection, numbers, wish.value);
}

void note(const platform::PHAssetChangeRequest& request, MarkWish::Mark mark, bool value) {
    ChangeTransaction* const transaction = ChangeTransaction::current();
    if (!transaction || !request.object)
        return;
    auto& open = transaction->openMarks;
    const bool joins = open && open->mark == mark && open->value == value &&
                       transaction->openMarksStep == transaction->steps.size();
    if (!joins) {
        open = std::make_shared<MarkWish>(MarkWish{mark, value, {}});
        transaction->steps.emplace_back(
            [wish = open](CatalogueConnection& connection) { carryOut(connection, *wish); });
        transaction->openMarksStep = transaction->steps.size();
    }
    open->assets.push_back(static_cast<const AssetRecord*>(request.object.get())->n);
}

} // namespace

} // namespace local

namespace platform {

// The request is the asset's own record: a transaction of many assets makes nothing for each.
PHAssetChangeRequest changeRequestForAsset(const PHAsset& asset) {
    if (!local::ChangeTransaction::current())
        return {};
    return {std::const_pointer_cast<void>(asset.object)};
}

void setFavorite(const PHAssetChangeRequest& request, bool favorite) {
    local::note(request, local::MarkWish::Mark::favorite, favorite);
}

void setHidden(const PHAssetChangeRequest& request, bool hidden) {
    local::note(request, local::MarkWish::Mark::hidden, hidden);
}

void deleteAssets(const PHFetchResult<PHAsset>& assets) {
    local::ChangeTransaction* const transaction = local::ChangeTransaction::current();
    if (!transaction)
        return;
    transaction->deletedAssets += assets.count();
    transaction->steps.emplace_back([assets](local::CatalogueConnection& connection) {
        local::moveToTrash(connection, local::sortedNumbers(local::rowNumbers(assets)));
    });
}

} // namespace platform
