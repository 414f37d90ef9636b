// Fetches of albums, smart albums and folders. They are few and read at once; what a folder holds
// is read only when somebody walks it, because its count is known.
#include "platform/collection.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/catalogue/collection_record.h"
#include "platform/local/fetch/fetched_assets.h"
#include "platform/local/library/access.h"
#include "platform/local/library/library.h"
#include "platform/local/system/guarded.h"

#include <algorithm>
#include <deque>

namespace local {

namespace {

using platform::PHAssetCollection;
using platform::PHCollection;
using platform::PHCollectionList;

// Behind a PHFetchResult of albums or of folders.
template <class Record>
struct FetchedCollections {
    std::vector<Record> records;
};

// What a folder or the top level holds, read when somebody walks it.
struct Children {
    std::int64_t folder = 0;                // row number; 0: the top level
    std::optional<std::int64_t> knownCount; // until the rows are read
    std::deque<CollectionRow> rows;         // read once: records point into it
};

template <class Record>
FetchedCollections<Record>& fetched(const std::shared_ptr<void>& object) {
    return *static_cast<FetchedCollections<Record>*>(object.get());
}

template <class Record>
platform::PHFetchResult<Record> resultOf(std::vector<Record> records) {
    return {std::make_shared<FetchedCollections<Record>>(
        FetchedCollections<Record>{std::move(records)})};
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

void readChildren(Children& children) {
    const auto sight = openToSee();
    if (!sight) {
        children.knownCount.reset();
        return;
    }
    Statement rows = sight->connection->statement("SELECT " PHOTOS_KIT_COLLECTION_COLUMNS
                                                  " FROM collection INDEXED BY collection_order "
                                                  "WHERE ifnull(parent, 0) = ?1 ORDER BY position");
    rows.bind(1, children.folder);
    std::deque<CollectionRow> read;
    while (rows.step())
        read.push_back(collectionRow(rows, sight->limited));
    // Only now: a reading that fails leaves what is known, and the next one tries again.
    children.rows = std::move(read);
    children.knownCount.reset();
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
            found.push_back(collectionOf(std::make_shared<const CollectionRow>(
                collectionRow(row, seesChoice(row.integer(5))))));
    }
    return found;
}

// The counts of all smart albums, in their order: one statement, because a level shows them all.
std::vector<std::int64_t> smartCounts(CatalogueConnection& connection) {
    static const std::string* const sql = [] {
        auto* text = new std::string("SELECT ");
        for (const SmartAlbum& album : smartAlbums())
            *text += std::string(album.countColumn) + ", ";
        text->replace(text->size() - 2, 2, " FROM library, smart_album");
        return text;
    }();
    std::vector<std::int64_t> counts(smartAlbums().size());
    Statement row = connection.statement(sql->c_str());
    if (row.step()) {
        for (std::size_t i = 0; i < counts.size(); ++i)
            counts[i] = row.integer(static_cast<int>(i));
    }
    return counts;
}

// Those that `wanted` picks.
template <class Wanted>
void appendSmartAlbums(std::vector<PHAssetCollection>& found, Wanted wanted) {
    const auto sight = openToSee();
    if (!sight)
        return;
    const std::vector<std::int64_t> counts = smartCounts(*sight->connection);
    for (std::size_t i = 0; i < counts.size(); ++i) {
        const SmartAlbum& album = smartAlbums()[i];
        if (wanted(album))
            found.push_back(
                collectionOf(album, sight->limited ? std::nullopt : std::optional(counts[i])));
    }
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
    const auto& children = *static_cast<local::Children*>(object.get());
    return children.knownCount ? static_cast<std::size_t>(*children.knownCount)
                               : children.rows.size();
}

template <>
std::optional<PHCollection> PHFetchResult<PHCollection>::objectAtIndex(std::size_t index) const {
    if (!object)
        return std::nullopt;
    auto& children = *static_cast<local::Children*>(object.get());
    return orElse<std::optional<PHCollection>>(std::nullopt, [&]() -> std::optional<PHCollection> {
        if (children.knownCount)
            local::readChildren(children);
        if (index >= children.rows.size())
            return std::nullopt;
        return local::collectionOf(
            std::shared_ptr<const local::CollectionRow>(object, &children.rows[index]));
    });
}

PHFetchResult<PHAssetCollection>
fetchAssetCollectionsWithLocalIdentifiers(const std::vector<std::string>& identifiers) {
    return orElse<PHFetchResult<PHAssetCollection>>({}, [&] {
        std::vector<PHAssetCollection> found;
        for (const std::string& identifier : identifiers) {
            if (const auto* smart = local::smartAlbumWithIdentifier(identifier))
                local::appendSmartAlbums(
                    found, [&](const local::SmartAlbum& album) { return &album == smart; });
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
    return {std::make_shared<local::Children>(local::Children{record.n, record.knownCount, {}})};
}

PHFetchResult<PHCollection> fetchTopLevelUserCollections() {
    return orElse<PHFetchResult<PHCollection>>({}, [] {
        const auto children = std::make_shared<local::Children>();
        local::readChildren(*children);
        return PHFetchResult<PHCollection>{children};
    });
}

PHFetchResult<PHAssetCollection> fetchAssetCollectionsWithType(long type, long subtype) {
    return orElse<PHFetchResult<PHAssetCollection>>({}, [&] {
        std::vector<PHAssetCollection> found;
        if (type == PHAssetCollectionTypeSmartAlbum)
            local::appendSmartAlbums(found, [&](const local::SmartAlbum& album) {
                return subtype == PHAssetCollectionSubtypeAny || subtype == album.subtype;
            });
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
            found.push_back(std::get<PHCollectionList>(
                local::collectionOf(std::make_shared<const local::CollectionRow>(
                    local::collectionRow(row, sight->limited)))));
        return local::resultOf(std::move(found));
    });
}

PHFetchResult<PHAssetCollection> fetchAssetCollectionsContainingAsset(const PHAsset& asset,
                                                                      long type) {
    return orElse<PHFetchResult<PHAssetCollection>>({}, [&] {
        std::vector<PHAssetCollection> found;
        const auto sight =
            asset.object && type == PHAssetCollectionTypeAlbum ? local::openToSee() : std::nullopt;
        if (!sight)
            return local::resultOf(std::move(found));
        local::Statement rows = sight->connection->statement(
            "SELECT " PHOTOS_KIT_COLLECTION_COLUMNS " FROM album_member AS m "
            "CROSS JOIN collection ON collection.n = m.album WHERE m.asset = ?1 "
            "ORDER BY ifnull(collection.parent, 0), collection.position");
        rows.bind(1, local::recordOf(asset).n);
        while (rows.step())
            found.push_back(std::get<PHAssetCollection>(
                local::collectionOf(std::make_shared<const local::CollectionRow>(
                    local::collectionRow(rows, sight->limited)))));
        return local::resultOf(std::move(found));
    });
}

PHFetchResult<PHAsset> fetchAssetsInAssetCollection(const PHAssetCollection& collection,
                                                    const PHFetchOptions* options) {
    if (!collection.object)
        return {};
    return local::assetResultOf([&] {
        const local::CollectionRecord& record = local::recordOf(collection);
        local::AlbumOrder order{record.smart, record.n, false};
        if (options && options->predicate)
            return std::make_shared<local::FetchedAssets>(
                local::memberWithIdentifier(order, options->predicate->argument));
        // Without options the album keeps its own order, and its count is known already.
        order.byPosition = !record.smart && (!options || options->sortDescriptors.empty());
        return std::make_shared<local::FetchedAssets>(std::in_place_type<local::AlbumAssets>, order,
                                                      options ? std::nullopt : record.knownCount);
    });
}

} // namespace platform
