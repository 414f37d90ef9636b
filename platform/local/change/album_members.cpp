#include "platform/local/change/album_members.h"

#include "platform/local/fetch/fetched_assets.h"
#include "platform/local/fetch/row_numbers.h"

#include <algorithm>
#include <span>

namespace local {

namespace {

using platform::PHAsset;
using platform::PHFetchResult;

// A row number and a place in the caller's order in one integer: the catalogue is walked in its own
// order, which for assets from all over it halves the time, and the album still gets the caller's.
constexpr std::int64_t placesAtOnce = std::int64_t{1} << 20;

void addInOrder(CatalogueConnection& connection, std::int64_t album, std::int64_t last,
                std::span<const std::int64_t> numbers) {
    std::vector<std::int64_t> placed;
    placed.reserve(numbers.size());
    for (const std::int64_t n : numbers)
        placed.push_back(n * placesAtOnce + static_cast<std::int64_t>(placed.size()));
    std::sort(placed.begin(), placed.end());
    connection
        .statement("INSERT OR IGNORE INTO album_member "
                   "SELECT ?1, asset.n, ?2 + 1 + (wanted.value & 1048575), asset.created, "
                   "asset.hidden = 0 AND asset.trashed_at IS NULL "
                   "FROM json_each(?3) AS wanted CROSS JOIN asset ON asset.n = wanted.value >> 20")
        .bind(1, album)
        .bind(2, last)
        .bind(3, jsonArray(placed))
        .run();
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
        // A copy of another album's members that may be seen, in their order.
        connection
            .statement("INSERT OR IGNORE INTO album_member "
                       "SELECT ?1, asset, ?2 + row_number() OVER (ORDER BY position), created, "
                       "listed FROM album_member WHERE album = ?3 AND listed = 1 "
                       "AND ((SELECT access FROM library) = 3 OR "
                       "asset IN (SELECT choice.asset FROM limited_choice AS choice))")
            .bind(1, album)
            .bind(2, last)
            .bind(3, source->order().album)
            .run();
    } else {
        const std::vector<std::int64_t> numbers = rowNumbers(assets);
        const std::span<const std::int64_t> all(numbers);
        for (std::size_t from = 0; from < all.size(); from += placesAtOnce)
            addInOrder(connection, album, last + static_cast<std::int64_t>(from),
                       all.subspan(from, std::min<std::size_t>(placesAtOnce, all.size() - from)));
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
    const std::string wanted = jsonArray(rowNumbers(assets));
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
