// Fetches of assets. The whole library is a cursor in a snapshot of its own, so that a page costs
// its own rows wherever it lies; assets asked for by identifier are few and read at once, so that
// no snapshot is held while they are changed or copied.
#include "platform/asset.h"

#include "platform/local/access.h"
#include "platform/local/asset_record.h"
#include "platform/local/guarded.h"
#include "platform/local/library.h"

#include <algorithm>
#include <variant>

namespace local {

namespace {

using platform::PHAsset;

// The listed assets, newest first, as a snapshot shows them. Walking forwards steps one
// statement; any other access seeks.
class ListedAssets {
public:
    // `forWalking`: somebody will ask for more than the count.
    explicit ListedAssets(bool forWalking)
        : connection_(Library::open()->connection()),
          state_(connection_->statement("SELECT access, listed, listing_changes FROM library")) {
        takeSnapshot();
        SharedListingMarkers& shared = connection_.library().listingMarkers();
        while (forWalking && shared.areKept() && !(markers_ = shared.at(*connection_, sequence_))) {
            // Another thread has moved the markers beyond this snapshot: take a newer one rather
            // than walk without markers.
            takeSnapshot();
        }
    }

    std::size_t count() const { return static_cast<std::size_t>(count_); }

    std::optional<PHAsset> at(std::size_t index) {
        const auto wanted = static_cast<std::int64_t>(index);
        if (wanted < 0 || wanted >= count_)
            return std::nullopt;
        if (!rows_ || wanted != next_)
            seek(wanted);
        if (!rows_->step())
            return std::nullopt;
        ++next_;
        PHAsset asset = assetFromRow(*rows_);
        if (favorites_)
            asset.isFavorite = isNextFavorite({rows_->integer(2), rows_->integer(0)});
        return asset;
    }

private:
    // A statement that has begun and is not reset holds its snapshot open, and what else runs on
    // the connection reads the same: this costs less than a transaction around it.
    void takeSnapshot() {
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

    void seek(std::int64_t index) {
        rows_.reset();
        favorites_.reset();
        next_ = index;
        if (seesChoice(access_)) {
            rows_.emplace(connection_->statement("SELECT " PHOTOS_KIT_ASSET_COLUMNS(
                "0", PHOTOS_KIT_IS_FAVORITE) " FROM limited_choice AS choice "
                                             "CROSS JOIN asset ON asset.n = choice.asset "
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
        favorites_.emplace(connection_->statement("SELECT created, asset FROM favorite "
                                                  "WHERE (created, asset) <= (?1, ?2) "
                                                  "ORDER BY created DESC, asset DESC"));
        favorite_.reset();
    }

    // Whether the asset with this key is a favourite. Favourites stand in the listing's order:
    // both are walked side by side, from the first asset that is asked for.
    bool isNextFavorite(const ListingKey& key) {
        if (!favorite_) {
            favorites_->bind(1, key.created).bind(2, key.n);
            stepFavorites();
        }
        while (favorite_->before(key))
            stepFavorites();
        return !key.before(*favorite_);
    }

    void stepFavorites() {
        const bool more = favorites_->step();
        favorite_ = more ? ListingKey{favorites_->integer(0), favorites_->integer(1)} : listingEnd;
    }

    ListingMarkers::Place locate(std::int64_t index) {
        // Near the start a walk is cheaper than making markers for the whole library.
        constexpr std::int64_t nearStart = 512;
        if (!markers_ && index >= nearStart)
            markers_ = connection_.library().listingMarkers().at(*connection_, sequence_);
        return markers_ ? markers_->locate(index) : ListingMarkers::Place{listingStart, index};
    }

    ConnectionLease connection_;
    Statement state_;
    std::optional<Statement> rows_; // statements are done before the connection goes back
    std::optional<Statement> favorites_;
    std::optional<ListingKey> favorite_; // the next one; nothing before the first is looked up
    long access_ = 0;
    std::int64_t count_ = 0;
    std::int64_t sequence_ = 0;
    std::int64_t next_ = 0;
    std::shared_ptr<const ListingMarkers> markers_;
};

std::vector<PHAsset> assetsWithIdentifiers(const std::vector<std::string>& identifiers) {
    std::vector<PHAsset> found;
    const ConnectionLease connection = Library::open()->connection();
    const Snapshot snapshot(*connection);
    const std::int64_t access = connection->integer("SELECT access FROM library");
    if (!seesEverything(access) && !seesChoice(access))
        return found;
    std::vector<Uuid> wanted;
    for (const std::string& identifier : identifiers) {
        if (const auto uuid = uuidOfAssetIdentifier(identifier))
            wanted.push_back(*uuid);
    }
    std::sort(wanted.begin(), wanted.end());
    wanted.erase(std::unique(wanted.begin(), wanted.end()), wanted.end());
    for (const Uuid& uuid : wanted) {
        Statement row = connection->statement("SELECT " PHOTOS_KIT_ASSET_COLUMNS(
            "asset.hidden", PHOTOS_KIT_IS_FAVORITE) " FROM asset WHERE asset.uuid = ?1 "
                                                    "AND asset.trashed_at IS NULL "
                                                    "AND (?2 OR asset.n IN (SELECT choice.asset "
                                                    "FROM limited_choice AS "
                                                    "choice))");
        row.bindBlob(1, uuid).bind(2, static_cast<std::int64_t>(seesEverything(access)));
        if (row.step())
            found.push_back(assetFromRow(row));
    }
    return found;
}

// Behind a PHFetchResult.
using FetchedAssets = std::variant<std::vector<PHAsset>, ListedAssets>;

} // namespace

} // namespace local

namespace platform {

using local::FetchedAssets;

template <>
std::size_t PHFetchResult<PHAsset>::count() const {
    if (!object)
        return 0;
    const auto* fetched = static_cast<const FetchedAssets*>(object.get());
    if (const auto* assets = std::get_if<std::vector<PHAsset>>(fetched))
        return assets->size();
    return std::get<local::ListedAssets>(*fetched).count();
}

template <>
std::optional<PHAsset> PHFetchResult<PHAsset>::objectAtIndex(std::size_t index) const {
    if (!object)
        return std::nullopt;
    auto* fetched = static_cast<FetchedAssets*>(object.get());
    if (const auto* assets = std::get_if<std::vector<PHAsset>>(fetched))
        return index < assets->size() ? std::optional((*assets)[index]) : std::nullopt;
    return local::orElse<std::optional<PHAsset>>(
        std::nullopt, [&] { return std::get<local::ListedAssets>(*fetched).at(index); });
}

PHFetchResult<PHAsset> fetchAssetsWithOptions(const PHFetchOptions& options) {
    // Newest first is the library's own order as well as the only one that is asked for; a fetch
    // that asks for no order is one to be counted.
    return local::orElse<PHFetchResult<PHAsset>>({}, [&] {
        return PHFetchResult<PHAsset>{std::make_shared<FetchedAssets>(
            std::in_place_type<local::ListedAssets>, !options.sortDescriptors.empty())};
    });
}

PHFetchResult<PHAsset>
fetchAssetsWithLocalIdentifiers(const std::vector<std::string>& identifiers) {
    return local::orElse<PHFetchResult<PHAsset>>({}, [&] {
        return PHFetchResult<PHAsset>{
            std::make_shared<FetchedAssets>(local::assetsWithIdentifiers(identifiers))};
    });
}

} // namespace platform
