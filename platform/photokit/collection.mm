#include "platform/photokit/objects.h"

namespace platform {
static PHAssetCollection recordOf(::PHAssetCollection* album) {
    return {textOf([album localIdentifier]).value_or(""), textOf([album localizedTitle]),
            static_cast<long>([album assetCollectionType]), retained(album)};
}

static PHCollectionList recordOf(::PHCollectionList* folder) {
    return {textOf([folder localIdentifier]).value_or(""), textOf([folder localizedTitle]),
            retained(folder)};
}

static PHCollection recordOf(::PHCollection* collection) {
    if ([collection isKindOfClass:[::PHAssetCollection class]])
        return recordOf(static_cast<::PHAssetCollection*>(collection));
    return recordOf(static_cast<::PHCollectionList*>(collection));
}

DEFINE_FETCH_RESULT(PHAssetCollection)
DEFINE_FETCH_RESULT(PHCollectionList)
DEFINE_FETCH_RESULT(PHCollection)

PHFetchResult<PHAssetCollection>
fetchAssetCollectionsWithLocalIdentifiers(const std::vector<std::string>& identifiers) {
    return {
        retained([::PHAssetCollection fetchAssetCollectionsWithLocalIdentifiers:native(identifiers)
                                                                        options:nil])};
}

PHFetchResult<PHCollectionList>
fetchCollectionListsWithLocalIdentifiers(const std::vector<std::string>& identifiers) {
    return {
        retained([::PHCollectionList fetchCollectionListsWithLocalIdentifiers:native(identifiers)
                                                                      options:nil])};
}

PHFetchResult<PHCollection> fetchCollectionsInCollectionList(const PHCollectionList& folder) {
    return {retained([::PHCollection fetchCollectionsInCollectionList:native(folder) options:nil])};
}

PHFetchResult<PHCollection> fetchTopLevelUserCollections() {
    return {retained([::PHCollectionList fetchTopLevelUserCollectionsWithOptions:nil])};
}

PHFetchResult<PHAssetCollection> fetchAssetCollectionsWithType(long type, long subtype) {
    return {retained([::PHAssetCollection
        fetchAssetCollectionsWithType:static_cast<::PHAssetCollectionType>(type)
                              subtype:static_cast<::PHAssetCollectionSubtype>(subtype)
                              options:nil])};
}

PHFetchResult<PHCollectionList>
fetchCollectionListsContainingCollection(const PHCollection& collection) {
    return {retained([::PHCollectionList fetchCollectionListsContainingCollection:native(collection)
                                                                          options:nil])};
}

PHFetchResult<PHAssetCollection> fetchAssetCollectionsContainingAsset(const PHAsset& asset,
                                                                      long type) {
    return {retained([::PHAssetCollection
        fetchAssetCollectionsContainingAsset:native(asset)
                                    withType:static_cast<::PHAssetCollectionType>(type)
                                     options:nil])};
}

PHFetchResult<PHAsset> fetchAssetsInAssetCollection(const PHAssetCollection& collection,
                                                    const PHFetchOptions* options) {
    return {retained([::PHAsset
        fetchAssetsInAssetCollection:native(collection)
                             options:options == nullptr ? nil : nativeOptions(*options)])};
}
} // namespace platform
