#include "platform/local/fetch/album_assets.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/library/access.h"

namespace local {

AlbumAssets::AlbumAssets(const AlbumOrder& order, std::optional<std::int64_t> knownCount)
    : order_(order), knownCount_(knownCount) {
    if (!knownCount_)
        walk_ = std::make_unique<Walk>(order_);
}

std::size_t AlbumAssets::count() {
    return static_cast<std::size_t>(knownCount_ ? *knownCount_ : walk_->count);
}

std::optional<platform::PHAsset> AlbumAssets::at(std::size_t index) {
    if (index >= count())
        return std::nullopt;
    if (!walk_)
        walk_ = std::make_unique<Walk>(order_);
    return walk_->at(order_, static_cast<std::int64_t>(index));
}

// The state's statement stays begun: it holds the snapshot open.
AlbumAssets::Walk::Walk(const AlbumOrder& order)
    : statements(statementsFor(order)), connection(Library::open()->connection()),
      state(connection->statement(statements.state)) {
    if (!order.smart)
        state.bind(4, order.album);
    if (order.isListing())
        markers = connection.library().listingMarkers().forNewSnapshot(*connection, [&] {
            takeSnapshot();
            return version;
        });
    else
        takeSnapshot();
    if (!limited)
        return;
    Statement counted = connection->statement(statements.limitedCount);
    if (!order.smart)
        counted.bind(4, order.album);
    if (counted.step())
        count = counted.integer(0);
}

void AlbumAssets::Walk::takeSnapshot() {
    state.reset();
    if (!state.step())
        return; // the album is gone
    const auto access = static_cast<long>(state.integer(0));
    limited = seesChoice(access);
    count = seesEverything(access) ? state.integer(1) : 0;
    version = state.integer(2);
}

std::optional<platform::PHAsset> AlbumAssets::Walk::at(const AlbumOrder& order,
                                                       std::int64_t index) {
    if (index >= count)
        return std::nullopt;
    if (!rows || index != next)
        seek(order, index);
    if (!rows->step())
        return std::nullopt;
    ++next;
    platform::PHAsset asset = assetFromRow(*rows);
    if (favorites)
        asset.isFavorite = favorites->isFavorite({rows->integer(2), rows->integer(0)});
    return asset;
}

void AlbumAssets::Walk::seek(const AlbumOrder& order, std::int64_t index) {
    rows.reset();
    favorites.reset();
    next = index;
    rows.emplace(connection->statement(limited ? statements.limitedPage : statements.page));
    if (!order.smart)
        rows->bind(4, order.album);
    if (limited || !statements.seekable) {
        rows->bind(3, index);
        return;
    }
    const ListingMarkers::Place place = locate(order, index);
    rows->bind(1, place.key.created).bind(2, place.key.n).bind(3, place.skip);
    if (statements.byCreation)
        favorites.emplace(*connection);
}

ListingMarkers::Place AlbumAssets::Walk::locate(const AlbumOrder& order, std::int64_t index) {
    if (index < walkedWithoutMarkers)
        return {listingStart, index};
    if (!markers && order.isListing())
        markers = connection.library().listingMarkers().at(*connection, version);
    if (!markers && !order.isListing()) {
        markers = connection.library().albumMarkers().at(order.key(), version, [&] {
            Statement keys = connection->statement(statements.keys);
            if (!order.smart)
                keys.bind(4, order.album);
            return ListingMarkers(keys, version);
        });
    }
    return markers ? markers->locate(index) : ListingMarkers::Place{listingStart, index};
}

} // namespace local
