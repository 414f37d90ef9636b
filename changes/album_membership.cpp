// Which assets a user album holds.
#include "bridge/arguments.h"
#include "bridge/call_scope.h"
#include "bridge/change_transaction.h"
#include "bridge/collections.h"
#include "bridge/entry_points.h"
#include "platform/collection_change_requests.h"

#include <string>
#include <vector>

namespace {

enum class Membership { add, remove };

constexpr jint notStarted = -1;
constexpr jint refusedOrFailed = -2; // a smart album, without a line; or the change, with one

bool changeMembership(const platform::PHAssetCollection& album,
                      const platform::PHFetchResult<platform::PHAsset>& assets,
                      Membership membership) {
    return performLoggedChanges("album membership change", [&] {
        const auto request = platform::changeRequestForAssetCollection(album);
        if (!request)
            return;
        if (membership == Membership::add)
            platform::addAssets(*request, assets);
        else
            platform::removeAssets(*request, assets);
    });
}

jint albumMembershipChange(JNIEnv* env, jstring albumId, jobjectArray assetIds,
                           Membership membership) {
    if (albumId == nullptr || assetIds == nullptr)
        return notStarted;
    const auto albumIdentifier = textOfString(env, albumId);
    if (!albumIdentifier)
        return notStarted;
    const std::vector<std::string> assetIdentifiers = stringArrayArgument(env, assetIds);
    if (assetIdentifiers.empty())
        return notStarted;
    const auto album = albumWithIdentifier(*albumIdentifier);
    if (!album)
        return notStarted;
    if (isSmartAlbum(*album))
        return refusedOrFailed;
    const auto assets = platform::fetchAssetsWithLocalIdentifiers(assetIdentifiers);
    if (assets.count() == 0)
        return notStarted;
    if (!changeMembership(*album, assets, membership))
        return refusedOrFailed;
    return static_cast<jint>(assets.count());
}

} // namespace

jint Java_com_morrowfen_lumatrice_service_PhotosService_nativeAddAssetsToAlbum(
    JNIEnv* env, jobject, jstring albumId, jobjectArray assetIds) noexcept {
    return inCallScope(
        [&] { return albumMembershipChange(env, albumId, assetIds, Membership::add); });
}

jint Java_com_morrowfen_lumatrice_service_PhotosService_nativeRemoveAssetsFromAlbum(
    JNIEnv* env, jobject, jstring albumId, jobjectArray assetIds) noexcept {
    return inCallScope(
        [&] { return albumMembershipChange(env, albumId, assetIds, Membership::remove); });
}
