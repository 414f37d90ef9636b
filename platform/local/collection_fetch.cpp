// Fetches of albums, smart albums and folders. They are few and read at once; what a folder holds
// is read only when somebody walks it, because its count is known.
#include "platform/collection.h"

#include "platform/local/access.h"
#include "platform/local/album_order.h"
#include "platform/local/collection_record.h"
#include "platform/local/guarded.h"
#include "platform/local/library.h"

#include <algorithm>

namespace local {

namespace {

using platform::PHAssetCollection;
using platform::PHCollection;
using platform::PHCollectionList;

// Behind a PHFetchResult of collections.
template <class Record>
struct FetchedCollections {
    std::vector<Record> records;
    // Set until the records are wanted, while only their number is known.
    std::optional<std::int64_t> knownCount;
    std::int64_t folder = 0;
};

template <class Record>
FetchedCollections<Record>& fetched(const std::shared_ptr<void>& object) {
    return *static_cast<FetchedCollections<Record>*>(object.get());
}

template <class Record>
platform::PHFetchResult<Record> resultOf(std::vector<Record> records) {
    return {std::make_shared<FetchedCollections<Record>>(
        FetchedCollections<Record>{std::move(records), std::nullopt, 0})};
}

// A connection to a library that this application may see; nothing without access.
struct Sight {
    ConnectionLease connection;
    bool limited;
};

std::optional<Sight> openToSee() {
    ConnectionLease connection = Library::open()->connection();
    const std::int64_t access = connection->integer("SELECT access FROM library");
    if (!seesEverything(access) && !seesChoice(access))
        return std::nullopt;
    return Sight{std::move(connection), seesChoice(access)};
}

// The direct children of a folder (row number), or of the top level (0).
std::vector<PHCollection> childrenOf(std::int64_t folder) {
    std::vector<PHCollection> children;
    const auto sight = openToSee();
    if (!sight)
        return children;
    Statement rows = sight->connection->statement("SELECT " PHOTOS_KIT_COLLECTION_COLUMNS
                                                  " FROM collection INDEXED BY collection_order "
                                                  "WHERE ifnull(parent, 0) = ?1 ORDER BY position");
    rows.bind(1, folder);
    while (rows.step())
        children.push_back(collectionFromRow(rows, sight->limited));
    return children;
}

std::vector<PHCollection> collectionsWithIdentifiers(const std::vector<std::string>& identifiers,
                                                     CollectionKind kind) {
    std::vector<PHCollection> found;
    std::vector<Uuid> wanted;
    for (const std::string& identifier : identifiers) {
        if (const auto uuid = uuidOfCollectionIdentifier(identifier, kind))
            wanted.push_back(*uuid);
    }
    if (wanted.empty())
        return found;
    std::sort(wanted.begin(), wanted.end());
    wanted.erase(std::unique(wanted.begin(), wanted.end()), wanted.end());
    const ConnectionLease connection = Library::open()->connection();
    for (const Uuid& uuid : wanted) {
        Statement row = connection->statement(
            "SELECT " PHOTOS_KIT_COLLECTION_COLUMNS ", library.access FROM collection, library "
            "WHERE uuid = ?1 AND kind = ?2 AND library.access IN (3, 4)");
        row.bindBlob(1, uuid).bind(2, kind);
        if (row.step())
            found.push_back(collectionFromRow(row, seesChoice(row.integer(5))));
    }
    return found;
}

PHAssetCollection liveSmartAlbum(const SmartAlbum& album, const Sight& sight) {
    if (sight.limited)
        return collectionOf(album, std::nullopt);
    Statement state = sight.connection->statement(statementsFor({&album, 0, false}).state);
    return collectionOf(album, state.step() ? state.integer(1) : 0);
}

} // namespace

} // namespace local

namespace platform {

using local::fetched;
using local::orElse;

template <>
std::size_t PHFetchResult<PHAssetCollection>::count() const {
    return object ? fetched<PHAssetCollection>(object).records.size() : 0;
}

template <>
std::optional<PHAssetCollection>
PHFetchResult<PHAssetCollection>::objectAtIndex(std::size_t index) const {
    if (index >= count())
        return std::nullopt;
    return fetched<PHAssetCollection>(object).records[index];
}

template <>
std::size_t PHFetchResult<PHCollectionList>::count() const {
    return object ? fetched<PHCollectionList>(object).records.size() : 0;
}

template <>
std::optional<PHCollectionList>
PHFetchResult<PHCollectionList>::objectAtIndex(std::size_t index) const {
    if (index >= count())
        return std::nullopt;
    return fetched<PHCollectionList>(object).records[index];
}

template <>
std::size_t PHFetchResult<PHCollection>::count() const {
    if (!object)
        return 0;
    const auto& collections = fetched<PHCollection>(object);
    return collections.knownCount ? static_cast<std::size_t>(*collections.knownCount)
                                  : collections.records.size();
}

template <>
std::optional<PHCollection> PHFetchResult<PHCollection>::objectAtIndex(std::size_t index) const {
    if (!object)
        return std::nullopt;
    auto& collections = fetched<PHCollection>(object);
    if (collections.knownCount) {
        collections.records = orElse<std::vector<PHCollection>>(
            {}, [&] { return local::childrenOf(collections.folder); });
        collections.knownCount.reset();
    }
    return index < collections.records.size() ? std::optional(collections.records[index])
                                              : std::nullopt;
}

PHFetchResult<PHAssetCollection>
fetchAssetCollectionsWithLocalIdentifiers(const std::vector<std::string>& identifiers) {
    return orElse<PHFetchResult<PHAssetCollection>>({}, [&] {
        std::vector<PHAssetCollection> found;
        for (const std::string& identifier : identifiers) {
            const local::SmartAlbum* smart = local::smartAlbumWithIdentifier(identifier);
            const auto sight = smart ? local::openToSee() : std::nullopt;
            if (sight)
                found.push_back(local::liveSmartAlbum(*smart, *sight));
        }
        for (auto& album : local::collectionsWithIdentifiers(identifiers, local::kindAlbum))
            found.push_back(std::get<PHAssetCollection>(std::move(album)));
        return local::resultOf(std::move(found));
    });
}

PHFetchResult<PHCollectionList>
fetchCollectionListsWithLocalIdentifiers(const std::vector<std::string>& identifiers) {
    return orElse<PHFetchResult<PHCollectionList>>({}, [&] {
        std::vector<PHCollectionList> found;
        for (auto& folder : local::collectionsWithIdentifiers(identifiers, local::kindFolder))
            found.push_back(std::get<PHCollectionList>(std::move(folder)));
        return local::resultOf(std::move(found));
    });
}

PHFetchResult<PHCollection> fetchCollectionsInCollectionList(const PHCollectionList& folder) {
    if (!folder.object)
        return {};
    const local::CollectionRecord& record = local::recordOf(folder);
    using Fetched = local::FetchedCollections<PHCollection>;
    return {std::make_shared<Fetched>(Fetched{{}, record.knownCount, record.n})};
}

PHFetchResult<PHCollection> fetchTopLevelUserCollections() {
    return orElse<PHFetchResult<PHCollection>>(
        {}, [] { return local::resultOf(local::childrenOf(0)); });
}

PHFetchResult<PHAssetCollection> fetchAssetCollectionsWithType(long type, long subtype) {
    return orElse<PHFetchResult<PHAssetCollection>>({}, [&] {
        std::vector<PHAssetCollection> found;
        const auto sight = local::openToSee();
        if (!sight || type != PHAssetCollectionTypeSmartAlbum)
            return local::resultOf(std::move(found));
        for (const local::SmartAlbum& album : local::smartAlbums()) {
            if (subtype == PHAssetCollectionSubtypeAny || subtype == album.subtype)
                found.push_back(local::liveSmartAlbum(album, *sight));
        }
        return local::resultOf(std::move(found));
    });
}

PHFetchResult<PHCollectionList>
fetchCollectionListsContainingCollection(const PHCollection& collection) {
    return orElse<PHFetchResult<PHCollectionList>>({}, [&] {
        std::vector<PHCollectionList> found;
        const bool real = std::visit([](const auto& c) { return c.object != nullptr; }, collection);
        const auto sight = real ? local::openToSee() : std::nullopt;
        if (!sight)
            return local::resultOf(std::move(found));
        local::Statement row = sight->connection->statement(
            "SELECT " PHOTOS_KIT_COLLECTION_COLUMNS " FROM collection AS child "
            "CROSS JOIN collection ON collection.n = child.parent WHERE child.n = ?1");
        row.bind(1, local::recordOf(collection).n);
        if (row.step())
            found.push_back(
                std::get<PHCollectionList>(local::collectionFromRow(row, sight->limited)));
        return local::resultOf(std::move(found));
    });
}

} // namespace platform
