// The tree of albums and folders, one level at a time.
#include "bridge/arguments.h"
#include "bridge/call_scope.h"
#include "bridge/collections.h"
#include "bridge/entry_points.h"
#include "bridge/results.h"
#include "browse/collection_record.h"
#include "platform/collection.h"

#include <cstddef>
#include <string>
#include <variant>

namespace {

std::size_t assetCountOf(const platform::PHAssetCollection& album) {
    return platform::fetchAssetsInAssetCollection(album, nullptr).count();
}

void separateFromPrevious(std::string& json) {
    if (json.size() > 1)
        json += ',';
}

void appendUserCollection(std::string& json, const platform::PHCollection& collection) {
    separateFromPrevious(json);
    if (const auto* const folder = std::get_if<platform::PHCollectionList>(&collection)) {
        const auto children = platform::fetchCollectionsInCollectionList(*folder);
        appendCollectionRecord(json, collection, CollectionKind::folder, children.count());
        return;
    }
    const auto& album = std::get<platform::PHAssetCollection>(collection);
    appendCollectionRecord(json, collection, CollectionKind::album, assetCountOf(album));
}

void appendUserCollections(std::string& json,
                           const platform::PHFetchResult<platform::PHCollection>& collections) {
    // About what a record takes: growing step by step would touch twice the memory.
    constexpr std::size_t recordSize = 112;
    const std::size_t total = collections.count();
    json.reserve(json.size() + total * recordSize);
    for (std::size_t index = 0; index < total; ++index) {
        if (const auto collection = collections.objectAtIndex(index))
            appendUserCollection(json, *collection);
    }
}

// Unlike the user's albums, empty smart albums are left out.
void appendSmartAlbums(std::string& json) {
    const auto albums = platform::fetchAssetCollectionsWithType(
        platform::PHAssetCollectionTypeSmartAlbum, platform::PHAssetCollectionSubtypeAny);
    const std::size_t total = albums.count();
    for (std::size_t index = 0; index < total; ++index) {
        const auto album = albums.objectAtIndex(index);
        if (!album)
            continue;
        const std::size_t assetCount = assetCountOf(*album);
        if (assetCount == 0)
            continue;
        separateFromPrevious(json);
        appendCollectionRecord(json, *album, CollectionKind::smart, assetCount);
    }
}

std::string jsonOfLevel(const std::string& parentIdentifier) {
    std::string json = "[";
    if (parentIdentifier.empty()) {
        appendUserCollections(json, platform::fetchTopLevelUserCollections());
        appendSmartAlbums(json);
    } else if (const auto folder = folderWithIdentifier(parentIdentifier)) {
        appendUserCollections(json, platform::fetchCollectionsInCollectionList(*folder));
    }
    json += ']';
    return json;
}

} // namespace

jstring Java_com_morrowfen_lumatrice_service_PhotosService_nativeListAlbums(
    JNIEnv* env, jobject, jstring parentFolderId) noexcept {
    return inCallScope([&] {
        const std::string parentIdentifier = stringArgument(env, parentFolderId).value_or("");
        return stringResult(env, jsonOfLevel(parentIdentifier));
    });
}
