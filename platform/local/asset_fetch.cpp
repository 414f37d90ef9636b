// Fetches of assets.
#include "platform/collection.h"

#include "platform/local/access.h"
#include "platform/local/asset_record.h"
#include "platform/local/collection_record.h"
#include "platform/local/fetched_assets.h"
#include "platform/local/guarded.h"
#include "platform/local/library.h"

#include <algorithm>

namespace local {

namespace {

using platform::PHAsset;

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

// An album's one asset with the identifier, if it has it.
std::vector<PHAsset> memberWithIdentifier(const AlbumOrder& order, const std::string& identifier) {
    std::vector<PHAsset> found;
    const std::optional<Uuid> uuid = uuidOfAssetIdentifier(identifier);
    if (!uuid)
        return found;
    const ConnectionLease connection = Library::open()->connection();
    const std::int64_t access = connection->integer("SELECT access FROM library");
    if (!seesEverything(access) && !seesChoice(access))
        return found;
    Statement row = connection->statement(statementsFor(order).member);
    row.bind(3, std::int64_t{seesEverything(access)}).bind(4, order.album).bindBlob(5, *uuid);
    if (row.step())
        found.push_back(assetFromRow(row));
    return found;
}

} // namespace

} // namespace local

namespace platform {

using local::FetchedAssets;

template <>
std::size_t PHFetchResult<PHAsset>::count() const {
    if (!object)
        return 0;
    return local::orElse<std::size_t>(0, [&] {
        return std::visit([](auto& assets) { return assets.count(); },
                          *static_cast<FetchedAssets*>(object.get()));
    });
}

template <>
std::optional<PHAsset> PHFetchResult<PHAsset>::objectAtIndex(std::size_t index) const {
    if (!object)
        return std::nullopt;
    return local::orElse<std::optional<PHAsset>>(std::nullopt, [&] {
        return std::visit([&](auto& assets) { return assets.at(index); },
                          *static_cast<FetchedAssets*>(object.get()));
    });
}

PHFetchResult<PHAsset> fetchAssetsInAssetCollection(const PHAssetCollection& collection,
                                                    const PHFetchOptions* options) {
    if (!collection.object)
        return {};
    return local::orElse<PHFetchResult<PHAsset>>({}, [&] {
        const local::CollectionRecord& record = local::recordOf(collection);
        local::AlbumOrder order{record.smart, record.n, false};
        if (options && options->predicate)
            return PHFetchResult<PHAsset>{std::make_shared<FetchedAssets>(local::KnownAssets{
                local::memberWithIdentifier(order, options->predicate->argument)})};
        // Without options the album keeps its own order, and its count is known already.
        order.byPosition = !record.smart && (!options || options->sortDescriptors.empty());
        return PHFetchResult<PHAsset>{
            std::make_shared<FetchedAssets>(std::in_place_type<local::AlbumAssets>, order,
                                            options ? std::nullopt : record.knownCount)};
    });
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
        return PHFetchResult<PHAsset>{std::make_shared<FetchedAssets>(
            local::KnownAssets{local::assetsWithIdentifiers(identifiers)})};
    });
}

} // namespace platform
