// Albums, smart albums and folders, and the fetches that find them and what they hold.
#pragma once

#include "platform/asset.h"

#include <limits>
#include <variant>

namespace platform {

enum PHAssetCollectionType : long {
    PHAssetCollectionTypeAlbum = 1,
    PHAssetCollectionTypeSmartAlbum = 2,
};

inline constexpr long PHAssetCollectionSubtypeAny = std::numeric_limits<long>::max();

// An album or a smart album as it stood when it was fetched.
struct PHAssetCollection {
    std::string localIdentifier;
    std::optional<std::string> localizedTitle;
    long assetCollectionType = PHAssetCollectionTypeAlbum; // or a value added later
    Object object;
};

// A folder, which holds albums and folders, as it stood when it was fetched.
struct PHCollectionList {
    std::string localIdentifier;
    std::optional<std::string> localizedTitle;
    Object object;
};

// Either of them, as a folder or the top level holds them.
using PHCollection = std::variant<PHAssetCollection, PHCollectionList>;

template <>
std::size_t PHFetchResult<PHAssetCollection>::count() const;
template <>
std::optional<PHAssetCollection>
PHFetchResult<PHAssetCollection>::objectAtIndex(std::size_t index) const;
template <>
std::size_t PHFetchResult<PHCollectionList>::count() const;
template <>
std::optional<PHCollectionList>
PHFetchResult<PHCollectionList>::objectAtIndex(std::size_t index) const;
template <>
std::size_t PHFetchResult<PHCollection>::count() const;
template <>
std::optional<PHCollection> PHFetchResult<PHCollection>::objectAtIndex(std::size_t index) const;

// The albums and smart albums with these identifiers; folders and unknown ones are absent.
PHFetchResult<PHAssetCollection>
fetchAssetCollectionsWithLocalIdentifiers(const std::vector<std::string>& identifiers);

// The folders with these identifiers; albums and unknown ones are absent.
PHFetchResult<PHCollectionList>
fetchCollectionListsWithLocalIdentifiers(const std::vector<std::string>& identifiers);

// What the folder holds directly, in the order that the library keeps. The count may be as old as
// the folder's own fetch; the records are those of the moment when the first one is asked for.
PHFetchResult<PHCollection> fetchCollectionsInCollectionList(const PHCollectionList& folder);

// The user's albums and folders that no folder holds, in the order that the library keeps.
PHFetchResult<PHCollection> fetchTopLevelUserCollections();

PHFetchResult<PHAssetCollection> fetchAssetCollectionsWithType(long type, long subtype);

// The folders that hold the collection directly, as the library is now; empty at the top level.
PHFetchResult<PHCollectionList>
fetchCollectionListsContainingCollection(const PHCollection& collection);

// The collections of this PHAssetCollectionType that hold the asset, hidden or not, as the library
// is now, in the library's order.
PHFetchResult<PHAssetCollection> fetchAssetCollectionsContainingAsset(const PHAsset& asset,
                                                                      long type);

// The assets of an album or smart album; null options: all that the library's defaults include,
// in its own order.
PHFetchResult<PHAsset> fetchAssetsInAssetCollection(const PHAssetCollection& collection,
                                                    const PHFetchOptions* options);

} // namespace platform
