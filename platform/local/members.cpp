#include "platform/local/members.h"

#include "platform/local/asset_record.h"
#include "platform/local/fetched_assets.h"

#include <algorithm>

namespace local {

namespace {

using platform::PHAsset;
using platform::PHFetchResult;

// The assets' row numbers as a JSON array: SQLite's json_each makes rows of it, so that a change
// of any number of assets is one statement.
std::string rowNumbers(const PHFetchResult<PHAsset>& assets) {
    std::string json = "[";
    const auto append = [&](const PHAsset& asset) {
        if (json.size() > 1)
            json += ',';
        json += std::to_string(recordOf(asset).n);
    };
    if (!assets.object)
        return "[]";
    const auto* fetched = static_cast<const FetchedAssets*>(assets.object.get());
    if (const auto* known = std::get_if<KnownAssets>(fetched)) {
        std::for_each(known->assets.begin(), known->assets.end(), append);
        return json + "]";
    }
    for (std::size_t i = 0; i < assets.count(); ++i) {
        if (const auto asset = assets.objectAtIndex(i))
            append(*asset);
    }
    return json + "]";
}

const AlbumAssets* albumBehind(const PHFetchResult<PHAsset>& assets) {
    if (!assets.object)
        return nullptr;
    return std::get_if<AlbumAssets>(static_cast<const FetchedAssets*>(assets.object.get()));
}

std::int64_t lastPosition(CatalogueConnection& connection, std::int64_t album) {
    Statement row = connection.statement("SELECT ifnull(max(position), 0) FROM album_member "
                                         "INDEXED BY album_order WHERE album = ?1");
    row.bind(1, album).step();
    return row.integer(0);
}

} // namespace

void addMembers(CatalogueConnection& connection, std::int64_t album,
                const PHFetchResult<PHAsset>& assets) {
    const std::int64_t last = lastPosition(connection, album);
    const AlbumAssets* source = albumBehind(assets);
    if (source && !source->order().smart) {
        // A copy of another album's members, in their order.
        connection
            .statement("INSERT OR IGNORE INTO album_member "
                       "SELECT ?1, asset, ?2 + row_number() OVER (ORDER BY position), created, "
                       "listed FROM album_member WHERE album = ?3 AND listed = 1")
            .bind(1, album)
            .bind(2, last)
            .bind(3, source->order().album)
            .run();
    } else {
        connection
            .statement("INSERT OR IGNORE INTO album_member "
                       "SELECT ?1, asset.n, ?2 + 1 + wanted.key, asset.created, "
                       "asset.hidden = 0 AND asset.trashed_at IS NULL "
                       "FROM json_each(?3) AS wanted CROSS JOIN asset ON asset.n = wanted.value")
            .bind(1, album)
            .bind(2, last)
            .bind(3, rowNumbers(assets))
            .run();
    }
    connection
        .statement("UPDATE collection SET changes = changes + 1, held = held + "
                   "(SELECT count(*) FROM album_member INDEXED BY album_order "
                   "WHERE album = ?1 AND listed = 1 AND position > ?2) WHERE n = ?1")
        .bind(1, album)
        .bind(2, last)
        .run();
}

void removeMembers(CatalogueConnection& connection, std::int64_t album,
                   const PHFetchResult<PHAsset>& assets) {
    const std::string wanted = rowNumbers(assets);
    connection
        .statement("UPDATE collection SET changes = changes + 1, held = held - "
                   "(SELECT count(*) FROM json_each(?2) AS wanted CROSS JOIN album_member AS m "
                   "ON m.album = ?1 AND m.asset = wanted.value AND m.listed = 1) WHERE n = ?1")
        .bind(1, album)
        .bind(2, wanted)
        .run();
    connection
        .statement("DELETE FROM album_member WHERE album = ?1 "
                   "AND asset IN (SELECT value FROM json_each(?2))")
        .bind(1, album)
        .bind(2, wanted)
        .run();
}

} // namespace local
