// Fetches of assets.
#include "platform/asset.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/catalogue/collection_record.h"
#include "platform/local/catalogue/handed_text.h"
#include "platform/local/fetch/fetched_assets.h"
#include "platform/local/library/access.h"
#include "platform/local/library/library.h"
#include "platform/local/system/guarded.h"

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

PHFetchResult<PHAsset> fetchAssetsWithOptions(const PHFetchOptions& options) {
    // Newest first is the library's own order as well as the only one that is asked for; a fetch
    // that asks for no order is one to be counted.
    return local::assetResultOf([&] {
        return std::make_shared<FetchedAssets>(std::in_place_type<local::ListedAssets>,
                                               !options.sortDescriptors.empty());
    });
}

PHFetchResult<PHAsset>
fetchAssetsWithLocalIdentifiers(const std::vector<std::string>& identifiers) {
    return local::assetResultOf(
        [&] { return std::make_shared<FetchedAssets>(local::assetsWithIdentifiers(identifiers)); });
}

std::vector<PHAssetResource> assetResourcesForAsset(const PHAsset& asset) {
    if (!asset.object)
        return {};
    const local::AssetRecord& record = local::recordOf(asset);
    const long type =
        record.media == PHAssetMediaTypeVideo ? PHAssetResourceTypeVideo : PHAssetResourceTypePhoto;
    std::vector<PHAssetResource> resources;
    resources.push_back(
        {type, local::handedText(record.filename), record.contentType, asset.object});
    if (record.edited) {
        resources.push_back(
            {PHAssetResourceTypeFullSizePhoto, "FullSizeRender.jpg", "public.jpeg", asset.object});
        resources.push_back(
            {PHAssetResourceTypeAdjustmentData, "Adjustments.data", "public.data", asset.object});
    }
    return resources;
}

} // namespace platform
