// What the host asks about one album or folder.
#include "bridge/arguments.h"
#include "bridge/call_scope.h"
#include "bridge/collections.h"
#include "bridge/entry_points.h"
#include "bridge/results.h"
#include "platform/collection.h"

#include <optional>
#include <string>

namespace {

std::optional<platform::PHCollection> collectionArgument(JNIEnv* env, jstring collectionId) {
    const auto identifier = stringArgument(env, collectionId);
    if (!identifier)
        return std::nullopt;
    return collectionWithIdentifier(*identifier);
}

std::string parentIdentifierOf(const std::optional<platform::PHCollection>& collection) {
    if (!collection)
        return {};
    const auto folder =
        firstObject(platform::fetchCollectionListsContainingCollection(*collection));
    return folder ? folder->localIdentifier : std::string();
}

bool albumHoldsAsset(const platform::PHAssetCollection& album, const std::string& assetIdentifier) {
    platform::PHFetchOptions options;
    options.predicate =
        platform::predicateWithFormat(platform::localIdentifierPredicateFormat, assetIdentifier);
    return platform::fetchAssetsInAssetCollection(album, &options).count() != 0;
}

} // namespace

// An unknown collection has no parent, but it has no title either, not even an empty one: the two
// methods answer it differently.

jstring Java_com_morrowfen_lumatrice_service_PhotosService_nativeParentCollection(
    JNIEnv* env, jobject, jstring collectionId) noexcept {
    return inCallScope([&] {
        return stringResult(env, parentIdentifierOf(collectionArgument(env, collectionId)));
    });
}

jstring Java_com_morrowfen_lumatrice_service_PhotosService_nativeCollectionTitle(
    JNIEnv* env, jobject, jstring collectionId) noexcept {
    return inCallScope([&]() -> jstring {
        const auto collection = collectionArgument(env, collectionId);
        if (!collection)
            return nullptr;
        return stringResult(env, titleOfCollection(*collection).value_or(""));
    });
}

jint Java_com_morrowfen_lumatrice_service_PhotosService_nativeAlbumContainsAsset(
    JNIEnv* env, jobject, jstring albumId, jstring assetId) noexcept {
    return inCallScope([&]() -> jint {
        const auto identifiers = stringPairArgument(env, albumId, assetId);
        if (!identifiers)
            return -1;
        const auto& [albumIdentifier, assetIdentifier] = *identifiers;
        const auto album = albumWithIdentifier(albumIdentifier);
        if (!album)
            return -1;
        return albumHoldsAsset(*album, assetIdentifier) ? 1 : 0;
    });
}
