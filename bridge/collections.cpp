#include "bridge/collections.h"

std::optional<platform::PHAssetCollection> albumWithIdentifier(const std::string& identifier) {
    return firstObject(platform::fetchAssetCollectionsWithLocalIdentifiers({identifier}));
}

std::optional<platform::PHCollectionList> folderWithIdentifier(const std::string& identifier) {
    return firstObject(platform::fetchCollectionListsWithLocalIdentifiers({identifier}));
}

std::optional<platform::PHCollection> collectionWithIdentifier(const std::string& identifier) {
    const auto albums = platform::fetchAssetCollectionsWithLocalIdentifiers({identifier});
    if (albums.count() != 0)
        return albums.objectAtIndex(0);
    return folderWithIdentifier(identifier);
}

bool isSmartAlbum(const platform::PHAssetCollection& album) {
    return album.assetCollectionType == platform::PHAssetCollectionTypeSmartAlbum;
}

const std::optional<std::string>& titleOfCollection(const platform::PHCollection& collection) {
    return std::visit(
        [](const auto& either) -> const std::optional<std::string>& {
            return either.localizedTitle;
        },
        collection);
}
