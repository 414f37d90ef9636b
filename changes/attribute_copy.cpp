// Giving one asset another one's place: its favourite mark and its albums. Each change is a
// transaction of its own, and one that fails does not undo the others.
#include "bridge/arguments.h"
#include "bridge/call_scope.h"
#include "bridge/collections.h"
#include "bridge/diagnostic_log.h"
#include "bridge/entry_points.h"
#include "platform/asset_change_requests.h"
#include "platform/collection_change_requests.h"
#include "platform/photo_library.h"

#include <cstddef>
#include <optional>
#include <string>

namespace {

constexpr jint notStarted = -1;

// Only ever sets the mark. Its outcome is nobody's result, so that only an error is worth a line.
void makeFavorite(const platform::PHAsset& target) {
    std::optional<platform::NSError> error;
    static_cast<void>(platform::performChangesAndWait(
        [&] { platform::setFavorite(platform::changeRequestForAsset(target), true); }, error));
    if (error)
        photosLogFormatted("favourite copy failed: %s", descriptionOrUnknown(error));
}

bool addToAlbum(const platform::PHAsset& target, const platform::PHAssetCollection& album) {
    std::optional<platform::NSError> error;
    const bool done = platform::performChangesAndWait(
        [&] {
            if (const auto request = platform::changeRequestForAssetCollection(album))
                platform::addAssets(*request, {target});
        },
        error);
    if (!done) {
        const std::string title = album.localizedTitle.value_or("(untitled)");
        photosLogFormatted("album rejoin failed for %s: %s", title.c_str(),
                           descriptionOrUnknown(error));
    }
    return done;
}

// How many of the source's albums took the target.
jint joinAlbumsOf(const platform::PHAsset& source, const platform::PHAsset& target) {
    const auto albums = platform::fetchAssetCollectionsContainingAsset(
        source, platform::PHAssetCollectionTypeAlbum);
    jint joined = 0;
    const std::size_t total = albums.count();
    for (std::size_t index = 0; index < total; ++index) {
        const auto album = albums.objectAtIndex(index);
        if (album && addToAlbum(target, *album))
            ++joined;
    }
    return joined;
}

jint copyAttributes(const std::string& sourceIdentifier, const std::string& targetIdentifier) {
    const auto source = firstObject(platform::fetchAssetsWithLocalIdentifiers({sourceIdentifier}));
    const auto target = firstObject(platform::fetchAssetsWithLocalIdentifiers({targetIdentifier}));
    if (!source || !target)
        return notStarted;
    if (source->isFavorite)
        makeFavorite(*target);
    return joinAlbumsOf(*source, *target);
}

} // namespace

jint Java_com_morrowfen_lumatrice_service_PhotosService_nativeCopyAssetAttributes(
    JNIEnv* env, jobject, jstring sourceAssetId, jstring targetAssetId) noexcept {
    return inCallScope([&] {
        const auto identifiers = stringPairArgument(env, sourceAssetId, targetAssetId);
        return identifiers ? copyAttributes(identifiers->first, identifiers->second) : notStarted;
    });
}
