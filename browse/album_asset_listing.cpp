// One album, page by page.
#include "bridge/arguments.h"
#include "bridge/call_scope.h"
#include "bridge/collections.h"
#include "bridge/entry_points.h"
#include "bridge/results.h"
#include "browse/asset_page.h"
#include "platform/collection.h"

#include <optional>
#include <string>

namespace {

// Smart albums have an order of their own, which for some is what they are about.
platform::PHFetchOptions listingOptions(const platform::PHAssetCollection& album) {
    platform::PHFetchOptions options;
    if (!isSmartAlbum(album))
        options.sortDescriptors = {{"creationDate", false}};
    return options;
}

std::string jsonOfAlbumPage(const std::optional<std::string>& identifier, jint count, jint offset) {
    if (!identifier)
        return "[]";
    const auto album = albumWithIdentifier(*identifier);
    if (!album)
        return "[]";
    const platform::PHFetchOptions options = listingOptions(*album);
    const auto assets = platform::fetchAssetsInAssetCollection(*album, &options);
    const PageBounds page = boundsOfPage(assets.count(), count, offset);
    return jsonOfPage(assets, page, AssetRecordVariant::withHidden);
}

} // namespace

jstring Java_com_morrowfen_lumatrice_service_PhotosService_nativeListAlbumAssets(
    JNIEnv* env, jobject, jstring albumId, jint count, jint offset) noexcept {
    return inCallScope([&] {
        const auto identifier = stringArgument(env, albumId);
        return stringResult(env, jsonOfAlbumPage(identifier, count, offset));
    });
}
