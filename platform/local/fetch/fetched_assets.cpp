#include "platform/local/fetch/fetched_assets.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/fetch/album_order.h"
#include "platform/local/library/access.h"

#include <algorithm>

namespace local {

namespace {

using platform::PHAsset;

// More than a person picks one by one, fewer than are worth reading twice.
constexpr std::size_t mostReadAtOnce = 64;
constexpr std::size_t windowSize = 256;

struct Wanted {
    Uuid uuid{};
    std::size_t place = 0;
};

// In the order of the index that finds them, which for many saves most of the reading; each once.
std::vector<Wanted> wantedAssets(const std::vector<std::string>& identifiers) {
    std::vector<Wanted> wanted;
    wanted.reserve(identifiers.size());
    for (const std::string& identifier : identifiers) {
        if (const auto uuid = uuidOfAssetIdentifier(identifier))
            wanted.push_back({*uuid, wanted.size()});
    }
    std::stable_sort(wanted.begin(), wanted.end(),
                     [](const Wanted& a, const Wanted& b) { return a.uuid < b.uuid; });
    const auto end = std::unique(wanted.begin(), wanted.end(),
                                 [](const Wanted& a, const Wanted& b) { return a.uuid == b.uuid; });
    wanted.erase(end, wanted.end());
    return wanted;
}

// What `read` makes of each asset's row, in the order in which they were asked for.
template <class Found, class Read>
std::vector<Found> find(CatalogueConnection& connection, const char* sql, bool everything,
                        const std::vector<Wanted>& wanted, Read read) {
    std::vector<std::pair<std::size_t, Found>> found;
    found.reserve(wanted.size());
    Statement row = connection.statement(sql);
    row.bind(2, std::int64_t{everything});
    for (const Wanted& one : wanted) {
        row.bindBlob(1, one.uuid);
        if (row.step())
            found.emplace_back(one.place, read(row));
        row.reset();
    }
    std::sort(found.begin(), found.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<Found> inOrder;
    inOrder.reserve(found.size());
    for (auto& [place, one] : found)
        inOrder.push_back(std::move(one));
    return inOrder;
}

#define IN_CHOICE "(?2 OR asset.n IN (SELECT choice.asset FROM limited_choice AS choice))"

constexpr const char* recordSql = "SELECT " PHOTOS_KIT_ASSET_COLUMNS(
    "asset.hidden",
    PHOTOS_KIT_IS_FAVORITE) " FROM asset "
                            "WHERE asset.uuid = ?1 AND asset.trashed_at IS NULL AND " IN_CHOICE;

// Two indexes answer it; the asset's own row is not read.
constexpr const char* rowNumberSql =
    "SELECT asset.n FROM asset WHERE asset.uuid = ?1 AND NOT EXISTS (SELECT 1 FROM asset AS trash "
    "INDEXED BY asset_trash WHERE trash.trashed_at IS NOT NULL AND trash.n = asset.n) "
    "AND " IN_CHOICE;

#undef IN_CHOICE

// Where every asset is to be found, the first index alone answers it.
constexpr const char* anyRowNumberSql = "SELECT n FROM asset WHERE uuid = ?1 AND ?2";

bool trashIsEmpty(CatalogueConnection& connection) {
    return connection.integer("SELECT EXISTS (SELECT 1 FROM asset INDEXED BY asset_trash "
                              "WHERE trashed_at IS NOT NULL)") == 0;
}

} // namespace

KnownAssets memberWithIdentifier(const AlbumOrder& order, const std::string& identifier) {
    KnownAssets found;
    const std::optional<Uuid> uuid = uuidOfAssetIdentifier(identifier);
    if (!uuid)
        return found;
    const ConnectionLease connection = Library::open()->connection();
    Statement row = connection->statement(statementsFor(order).member);
    if (!order.smart)
        row.bind(4, order.album);
    row.bindBlob(5, *uuid);
    if (row.step())
        found.assets.push_back(assetFromRow(row));
    return found;
}

FetchedAssets assetsWithIdentifiers(const std::vector<std::string>& identifiers) {
    const std::vector<Wanted> wanted = wantedAssets(identifiers);
    const ConnectionLease connection = Library::open()->connection();
    const Snapshot snapshot(*connection);
    const std::int64_t access = connection->integer("SELECT access FROM library");
    const bool everything = seesEverything(access);
    if (!everything && !seesChoice(access))
        return KnownAssets{};
    if (wanted.size() <= mostReadAtOnce)
        return KnownAssets{find<PHAsset>(*connection, recordSql, everything, wanted, assetFromRow)};
    const char* const sql =
        everything && trashIsEmpty(*connection) ? anyRowNumberSql : rowNumberSql;
    return ManyAssets(find<std::int64_t>(*connection, sql, everything, wanted,
                                         [](const Statement& row) { return row.integer(0); }));
}

std::optional<PHAsset> ManyAssets::at(std::size_t index) {
    if (index >= rowNumbers_.size())
        return std::nullopt;
    if (index < windowStart_ || index >= windowStart_ + window_.size())
        readWindow(index);
    const std::optional<PHAsset>& asset = window_[index - windowStart_];
    if (!asset)
        throw LibraryError(platform::PHPhotosErrorDomain, invalidResourceCode,
                           "An asset no longer exists; nothing was changed.");
    return asset;
}

void ManyAssets::readWindow(std::size_t start) {
    window_.clear(); // so that nothing of a reading that fails is taken for the window
    windowStart_ = start;
    const ConnectionLease connection = Library::open()->connection();
    const Snapshot snapshot(*connection);
    Statement row = connection->statement("SELECT " PHOTOS_KIT_ASSET_COLUMNS(
        "asset.hidden",
        PHOTOS_KIT_IS_FAVORITE) " FROM asset WHERE asset.n = ?1 AND asset.trashed_at IS NULL");
    const std::size_t end = std::min(start + windowSize, rowNumbers_.size());
    for (std::size_t i = start; i < end; ++i) {
        row.bind(1, rowNumbers_[i]);
        window_.push_back(row.step() ? std::optional(assetFromRow(row)) : std::nullopt);
        row.reset();
    }
}

} // namespace local
