// Fetches of assets.
#include "platform/collection.h"

#include "platform/local/access.h"
#include "platform/local/asset_record.h"
#include "platform/local/collection_record.h"
#include "platform/local/fetched_assets.h"
#include "platform/local/guarded.h"
#include "platform/local/library.h"

namespace local {

namespace {

using platform::PHAsset;

// What `fetch` answers; a fetch that fails is told from an empty one by changes alone.
template <class Fetch>
platform::PHFetchResult<PHAsset> resultOf(Fetch fetch) noexcept {
    return orElse<platform::PHFetchResult<PHAsset>>({}, [&]() -> platform::PHFetchResult<PHAsset> {
        try {
            return {fetch()};
        } catch (const LibraryError& failure) {
            return {std::make_shared<FetchedAssets>(UnreadAssets{failure.error()})};
        }
    });
}

// An album's one asset with the identifier, if it has it.
std::vector<PHAsset> memberWithIdentifier(const AlbumOrder& order, const std::string& identifier) {
    std::vector<PHAsset> found;
    const std::optional<Uuid> uuid = uuidOfAssetIdentifier(identifier);
    if (!uuid)
        return found;
    const ConnectionLease connection = Library::open()->connection();
    Statement row = connection->statement(statementsFor(order).member);
    if (!order.smart)
        row.bind(4, order.album);
    row.bindBlob(5, *uuid);
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
    return local::resultOf([&] {
        const local::CollectionRecord& record = local::recordOf(collection);
        local::AlbumOrder order{record.smart, record.n, false};
        if (options && options->predicate)
            return std::make_shared<FetchedAssets>(local::KnownAssets{
                local::memberWithIdentifier(order, options->predicate->argument)});
        // Without options the album keeps its own order, and its count is known already.
        order.byPosition = !record.smart && (!options || options->sortDescriptors.empty());
        return std::make_shared<FetchedAssets>(std::in_place_type<local::AlbumAssets>, order,
                                               options ? std::nullopt : record.knownCount);
    });
}

PHFetchResult<PHAsset> fetchAssetsWithOptions(const PHFetchOptions& options) {
    // Newest first is the library's own order as well as the only one that is asked for; a fetch
    // that asks for no order is one to be counted.
    return local::resultOf([&] {
        return std::make_shared<FetchedAssets>(std::in_place_type<local::ListedAssets>,
                                               !options.sortDescriptors.empty());
    });
}

PHFetchResult<PHAsset>
fetchAssetsWithLocalIdentifiers(const std::vector<std::string>& identifiers) {
    return local::resultOf(
        [&] { return std::make_shared<FetchedAssets>(local::assetsWithIdentifiers(identifiers)); });
}

} // namespace platform
