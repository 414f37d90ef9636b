#include "platform/local/fetch/listed_assets.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/library/access.h"

namespace local {

ListedAssets::ListedAssets(bool forWalking)
    : connection_(Library::open()->connection()),
      state_(connection_->statement("SELECT access, listed, listing_changes FROM library")) {
    if (!forWalking) {
        takeSnapshot();
        return;
    }
    markers_ = connection_.library().listingMarkers().forNewSnapshot(*connection_, [&] {
        takeSnapshot();
        return sequence_;
    });
    accessHere_ = accessOfThisThreadsFetch(access_);
}

std::optional<platform::PHAsset> ListedAssets::at(std::size_t index) {
    const auto wanted = static_cast<std::int64_t>(index);
    if (wanted < 0 || wanted >= count_)
        return std::nullopt;
    if (!rows_ || wanted != next_)
        seek(wanted);
    if (!rows_->step())
        return std::nullopt;
    ++next_;
    platform::PHAsset asset = assetFromRow(*rows_);
    if (favorites_)
        asset.isFavorite = favorites_->isFavorite({rows_->integer(2), rows_->integer(0)});
    return asset;
}

// A statement that has begun and is not reset holds its snapshot open, and what else runs on the
// connection reads the same: this costs less than a transaction around it.
void ListedAssets::takeSnapshot() {
    state_.reset();
    if (!state_.step())
        throw LibraryError(sqliteErrorDomain, SQLITE_CORRUPT, "The catalogue is incomplete.");
    access_ = static_cast<long>(state_.integer(0));
    count_ = seesEverything(access_) ? state_.integer(1) : 0;
    sequence_ = state_.integer(2);
    if (!seesChoice(access_))
        return;
    count_ = connection_->integer("SELECT count(*) FROM limited_choice AS choice "
                                  "CROSS JOIN asset ON asset.n = choice.asset "
                                  "WHERE asset.hidden = 0 AND asset.trashed_at IS NULL");
}

void ListedAssets::seek(std::int64_t index) {
    rows_.reset();
    favorites_.reset();
    next_ = index;
    if (seesChoice(access_)) {
        rows_.emplace(connection_->statement("SELECT " PHOTOS_KIT_ASSET_COLUMNS(
            "0", PHOTOS_KIT_IS_FAVORITE) " FROM limited_choice AS choice CROSS JOIN asset ON "
                                         "asset.n = choice.asset "
                                         "WHERE asset.hidden = 0 AND asset.trashed_at IS NULL "
                                         "ORDER BY asset.created DESC, asset.n DESC LIMIT -1 "
                                         "OFFSET ?1"));
        rows_->bind(1, index);
        return;
    }
    const ListingMarkers::Place place = locate(index);
    rows_.emplace(connection_->statement("SELECT " PHOTOS_KIT_ASSET_COLUMNS(
        "0", "0") " FROM asset INDEXED BY asset_listing "
                  "WHERE asset.hidden = 0 AND asset.trashed_at IS NULL "
                  "AND (asset.created, asset.n) <= (?1, ?2) "
                  "ORDER BY asset.created DESC, asset.n DESC LIMIT -1 OFFSET ?3"));
    rows_->bind(1, place.key.created).bind(2, place.key.n).bind(3, place.skip);
    favorites_.emplace(*connection_);
}

ListingMarkers::Place ListedAssets::locate(std::int64_t index) {
    if (!markers_ && index >= walkedWithoutMarkers)
        markers_ = connection_.library().listingMarkers().at(*connection_, sequence_);
    return markers_ ? markers_->locate(index) : ListingMarkers::Place{listingStart, index};
}

} // namespace local
