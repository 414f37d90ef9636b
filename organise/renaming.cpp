// New titles for albums and folders.
#include "bridge/arguments.h"
#include "bridge/call_scope.h"
#include "bridge/change_transaction.h"
#include "bridge/collections.h"
#include "bridge/diagnostic_log.h"
#include "bridge/entry_points.h"
#include "platform/collection_change_requests.h"

#include <optional>
#include <string>

namespace {

constexpr jint done = 0;
constexpr jint notStarted = -1;
constexpr jint refusedOrFailed = -2; // a smart album, without a line; or the change, with one

std::string titleReportedFor(const std::string& albumIdentifier) {
    const auto albums = platform::fetchAssetCollectionsWithLocalIdentifiers({albumIdentifier});
    if (albums.count() == 0)
        return "(gone)";
    const auto album = albums.objectAtIndex(0);
    return album ? album->localizedTitle.value_or("") : std::string();
}

jint renameAlbum(const platform::PHAssetCollection& album, const std::string& identifier,
                 const std::string& title) {
    if (isSmartAlbum(album))
        return refusedOrFailed;
    const bool renamed = performLoggedChanges("rename album", [&] {
        if (const auto request = platform::changeRequestForAssetCollection(album))
            platform::setTitle(*request, title);
    });
    if (!renamed)
        return refusedOrFailed;
    // For the log only: a library that reports another title has still done the change.
    photosLogFormatted("renamed album to '%s'; Photos now reports '%s'", title.c_str(),
                       titleReportedFor(identifier).c_str());
    return done;
}

jint renameFolder(const platform::PHFetchResult<platform::PHCollectionList>& folders,
                  const std::string& title) {
    const bool renamed = performLoggedChanges("rename folder", [&] {
        const auto folder = folders.objectAtIndex(0);
        if (!folder)
            return;
        if (const auto request = platform::changeRequestForCollectionList(*folder))
            platform::setTitle(*request, title);
    });
    return renamed ? done : refusedOrFailed;
}

jint renameCollection(const std::string& identifier, const std::string& title) {
    const auto albums = platform::fetchAssetCollectionsWithLocalIdentifiers({identifier});
    if (albums.count() != 0) {
        const auto album = albums.objectAtIndex(0);
        return album ? renameAlbum(*album, identifier, title) : notStarted;
    }
    const auto folders = platform::fetchCollectionListsWithLocalIdentifiers({identifier});
    return folders.count() != 0 ? renameFolder(folders, title) : notStarted;
}

} // namespace

jint Java_com_morrowfen_lumatrice_service_PhotosService_nativeRenameAlbum(JNIEnv* env, jobject,
                                                                          jstring collectionId,
                                                                          jstring title) noexcept {
    return inCallScope([&]() -> jint {
        const auto texts = stringPairArgument(env, collectionId, title);
        if (!texts)
            return notStarted;
        const auto& [identifier, titleText] = *texts;
        return titleText.empty() ? notStarted : renameCollection(identifier, titleText);
    });
}
