// Fetches of albums, smart albums and folders, and of what they hold.
#include "tests/double/fetch_results.h"
#include "tests/double/scripted_library.h"

namespace platform {

using scripted::library;
using scripted::listUnder;
using scripted::Records;
using scripted::resultOf;
using scripted::snapshotOf;

namespace {

// What stands under the identifiers.
template <class Record>
PHFetchResult<Record> lookUp(const std::map<std::string, std::optional<Record>>& all,
                             const std::vector<std::string>& identifiers) {
    Records<Record> found;
    for (const std::string& identifier : identifiers) {
        if (const auto entry = all.find(identifier); entry != all.end())
            found.push_back(entry->second);
    }
    return resultOf(std::move(found));
}

} // namespace

#define DEFINE_FETCH_RESULT(Record)                                                                \
    template <>                                                                                    \
    std::size_t PHFetchResult<Record>::count() const {                                             \
        return snapshotOf(*this).count;                                                            \
    }                                                                                              \
    template <>                                                                                    \
    std::optional<Record> PHFetchResult<Record>::objectAtIndex(std::size_t index) const {          \
        if (std::is_same_v<Record, PHAsset>)                                                       \
            library().note("asset at " + std::to_string(index));                                   \
        return snapshotOf(*this).records.at(index);                                                \
    }
DEFINE_FETCH_RESULT(PHAsset)
DEFINE_FETCH_RESULT(PHAssetCollection)
DEFINE_FETCH_RESULT(PHCollectionList)
DEFINE_FETCH_RESULT(PHCollection)

PHFetchResult<PHAssetCollection>
fetchAssetCollectionsWithLocalIdentifiers(const std::vector<std::string>& identifiers) {
    library().note("fetch albums " + scripted::joined(identifiers));
    return lookUp(library().albums, identifiers);
}

PHFetchResult<PHCollectionList>
fetchCollectionListsWithLocalIdentifiers(const std::vector<std::string>& identifiers) {
    library().note("fetch folders " + scripted::joined(identifiers));
    return lookUp(library().folders, identifiers);
}

PHFetchResult<PHCollection> fetchCollectionsInCollectionList(const PHCollectionList& folder) {
    library().note("fetch collections in " + folder.localIdentifier);
    return resultOf(listUnder(folder.localIdentifier, library().children));
}

PHFetchResult<PHCollection> fetchTopLevelUserCollections() {
    library().note("fetch collections at the top level");
    return resultOf(library().topLevel);
}

PHFetchResult<PHAssetCollection> fetchAssetCollectionsWithType(long type, long subtype) {
    library().note("fetch albums of type " + std::to_string(type) + ", subtype " +
                   std::to_string(subtype));
    return resultOf(library().smartAlbums);
}

PHFetchResult<PHCollectionList>
fetchCollectionListsContainingCollection(const PHCollection& collection) {
    const std::string identifier =
        std::visit([](const auto& either) { return either.localIdentifier; }, collection);
    library().note("fetch folders that hold " + identifier);
    return resultOf(listUnder(identifier, library().holders));
}

PHFetchResult<PHAssetCollection> fetchAssetCollectionsContainingAsset(const PHAsset& asset,
                                                                      long type) {
    library().note("fetch albums of type " + std::to_string(type) + " that hold " +
                   asset.localIdentifier);
    return resultOf(listUnder(asset.localIdentifier, library().albumsHolding));
}

PHFetchResult<PHAsset> fetchAssetsInAssetCollection(const PHAssetCollection& collection,
                                                    const PHFetchOptions* options) {
    library().note("fetch assets in " + collection.localIdentifier +
                   (options == nullptr ? ", no options" : scripted::describe(*options)));
    auto assets = listUnder(collection.localIdentifier, library().assetsInAlbum);
    if (options != nullptr && options->predicate) {
        std::erase_if(assets, [&](const auto& asset) {
            return !asset || asset->localIdentifier != options->predicate->argument;
        });
    }
    return resultOf(std::move(assets));
}

} // namespace platform
