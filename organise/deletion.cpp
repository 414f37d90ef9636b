// Deleting albums and folders, never assets.
#include "bridge/arguments.h"
#include "bridge/call_scope.h"
#include "bridge/change_transaction.h"
#include "bridge/collections.h"
#include "bridge/entry_points.h"
#include "platform/collection_change_requests.h"

#include <functional>
#include <string>

namespace {

constexpr jint done = 0;
constexpr jint notStarted = -1;
constexpr jint refusedOrFailed = -2; // a smart album, without a line; or the change, with one

// Folders fail with the same words as albums.
jint deleteInTransaction(const std::function<void()>& changeBlock) {
    return performLoggedChanges("delete album", changeBlock) ? done : refusedOrFailed;
}

jint deleteCollection(const std::string& identifier) {
    const auto albums = platform::fetchAssetCollectionsWithLocalIdentifiers({identifier});
    if (albums.count() != 0) {
        const auto album = albums.objectAtIndex(0);
        if (album && isSmartAlbum(*album))
            return refusedOrFailed;
        return deleteInTransaction([&] { platform::deleteAssetCollections(albums); });
    }
    const auto folders = platform::fetchCollectionListsWithLocalIdentifiers({identifier});
    if (folders.count() == 0)
        return notStarted;
    return deleteInTransaction([&] { platform::deleteCollectionLists(folders); });
}

} // namespace

jint Java_com_morrowfen_lumatrice_service_PhotosService_nativeDeleteAlbum(
    JNIEnv* env, jobject, jstring collectionId) noexcept {
    return inCallScope([&] {
        const auto identifier = stringArgument(env, collectionId);
        return identifier ? deleteCollection(*identifier) : notStarted;
    });
}
