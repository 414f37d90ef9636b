// Changes to albums and folders: each request notes steps, which run in the order in which they
// were made inside the write transaction. A step that cannot be done refuses the whole
// transaction.
#include "platform/collection_change_requests.h"

#include "platform/local/catalogue/collection_record.h"
#include "platform/local/change/album_members.h"
#include "platform/local/change/change_transaction.h"
#include "platform/local/fetch/fetched_assets.h"
#include "platform/local/system/guarded.h"

namespace local {

namespace {

using platform::PHPhotosErrorDomain;

// The album or folder that a request is about, by identifier, because a new one has no row yet.
struct CollectionChange {
    Uuid uuid{};
    CollectionKind kind = kindAlbum;
};

LibraryError refused(std::string sentence) {
    return {PHPhotosErrorDomain, invalidResourceCode, std::move(sentence)};
}

std::int64_t rowOf(CatalogueConnection& connection, const CollectionChange& change) {
    Statement row = connection.statement("SELECT n FROM collection WHERE uuid = ?1 AND kind = ?2");
    row.bindBlob(1, change.uuid).bind(2, change.kind);
    if (!row.step())
        throw refused(change.kind == kindAlbum ? "The album no longer exists."
                                               : "The folder no longer exists.");
    return row.integer(0);
}

// The place behind all that a folder (0: the top level) holds.
std::int64_t nextPosition(CatalogueConnection& connection, std::int64_t parent) {
    Statement row =
        connection.statement("SELECT ifnull(max(position), 0) + 1 FROM collection "
                             "INDEXED BY collection_order WHERE ifnull(parent, 0) = ?1");
    row.bind(1, parent).step();
    return row.integer(0);
}

void create(CatalogueConnection& connection, const CollectionChange& change,
            const std::string& title) {
    connection
        .statement("INSERT INTO collection (uuid, kind, title, position) VALUES (?1, ?2, ?3, ?4)")
        .bindBlob(1, change.uuid)
        .bind(2, change.kind)
        .bind(3, title)
        .bind(4, nextPosition(connection, 0))
        .run();
}

void rename(CatalogueConnection& connection, const CollectionChange& change,
            const std::string& title) {
    const std::int64_t n = rowOf(connection, change);
    connection.statement("UPDATE collection SET title = ?1 WHERE n = ?2")
        .bind(1, title)
        .bind(2, n)
        .run();
}

bool isInside(CatalogueConnection& connection, std::int64_t n, std::int64_t outer) {
    Statement above = connection.statement(
        "WITH RECURSIVE above (n) AS (SELECT ?1 UNION SELECT collection.parent FROM above "
        "JOIN collection ON collection.n = above.n WHERE collection.parent IS NOT NULL) "
        "SELECT 1 FROM above WHERE n = ?2");
    return above.bind(1, n).bind(2, outer).step();
}

void file(CatalogueConnection& connection, std::int64_t child, std::int64_t folder) {
    if (isInside(connection, folder, child))
        throw refused("A folder cannot be filed into itself or into a folder inside it.");
    Statement place = connection.statement("SELECT parent FROM collection WHERE n = ?1");
    if (!place.bind(1, child).step())
        throw refused("The collection no longer exists.");
    if (!place.isNull(0) && place.integer(0) == folder)
        return; // it is there already, and keeps its place
    const std::int64_t position = nextPosition(connection, folder);
    connection.statement("UPDATE collection SET parent = ?1, position = ?2 WHERE n = ?3")
        .bind(1, folder)
        .bind(2, position)
        .bind(3, child)
        .run();
}

// The collection and all that is inside it, in one statement, so that no order of deletion can
// offend against the references between them.
void removeTree(CatalogueConnection& connection, std::int64_t n) {
#define TREE                                                                                       \
    "(WITH RECURSIVE tree (n) AS (SELECT ?1 UNION SELECT collection.n FROM tree "                  \
    "JOIN collection ON collection.parent = tree.n) SELECT n FROM tree)"
    connection.statement("DELETE FROM album_member WHERE album IN " TREE).bind(1, n).run();
    connection.statement("DELETE FROM collection WHERE n IN " TREE).bind(1, n).run();
#undef TREE
}

template <class Request>
Request begin(const std::string& title, CollectionKind kind) {
    auto* transaction = ChangeTransaction::current();
    if (!transaction)
        return {};
    return orElse<Request>({}, [&] {
        const auto change = std::make_shared<CollectionChange>();
        change->uuid = randomUuid();
        change->kind = kind;
        transaction->steps.emplace_back([change, title](CatalogueConnection& connection) {
            create(connection, *change, title);
        });
        return Request{change};
    });
}

template <class Request>
std::optional<platform::PHObjectPlaceholder> placeholder(const Request& request) {
    if (!request.object)
        return std::nullopt;
    const auto& change = *static_cast<const CollectionChange*>(request.object.get());
    return platform::PHObjectPlaceholder{collectionIdentifier(change.uuid, change.kind)};
}

// A request about a collection that exists already.
template <class Request>
std::optional<Request> resume(const std::string& identifier, CollectionKind kind) {
    const auto uuid = uuidOfCollectionIdentifier(identifier, kind);
    if (!uuid || !ChangeTransaction::current())
        return std::nullopt;
    const auto change = std::make_shared<CollectionChange>();
    change->uuid = *uuid;
    change->kind = kind;
    return Request{change};
}

// Notes a step of the request; without one (a request made outside a block) nothing.
template <class Request, class Step>
void note(const Request& request, Step step) {
    auto* transaction = ChangeTransaction::current();
    if (!transaction || !request.object)
        return;
    transaction->steps.emplace_back(
        [change = std::static_pointer_cast<CollectionChange>(request.object),
         step = std::move(step)](CatalogueConnection& connection) { step(connection, *change); });
}

template <class Record>
void noteDeletion(const platform::PHFetchResult<Record>& collections) {
    auto* transaction = ChangeTransaction::current();
    if (!transaction)
        return;
    for (std::size_t i = 0; i < collections.count(); ++i) {
        const auto collection = collections.objectAtIndex(i);
        if (!collection || !collection->object)
            continue;
        const CollectionRecord& record = recordOf(*collection);
        transaction->steps.emplace_back(
            [n = record.n, smart = record.smart != nullptr](CatalogueConnection& connection) {
                if (smart)
                    throw refused("An album that the library keeps by itself cannot be deleted.");
                removeTree(connection, n);
            });
    }
}

} // namespace

} // namespace local

namespace platform {

using local::CatalogueConnection;
using local::CollectionChange;

PHAssetCollectionChangeRequest
creationRequestForAssetCollectionWithTitle(const std::string& title) {
    return local::begin<PHAssetCollectionChangeRequest>(title, local::kindAlbum);
}

std::optional<PHObjectPlaceholder>
placeholderForCreatedAssetCollection(const PHAssetCollectionChangeRequest& request) {
    return local::placeholder(request);
}

std::optional<PHAssetCollectionChangeRequest>
changeRequestForAssetCollection(const PHAssetCollection& album) {
    return local::resume<PHAssetCollectionChangeRequest>(album.localIdentifier, local::kindAlbum);
}

void setTitle(const PHAssetCollectionChangeRequest& request, const std::string& title) {
    local::note(request, [title](CatalogueConnection& connection, const CollectionChange& change) {
        local::rename(connection, change, title);
    });
}

void addAssets(const PHAssetCollectionChangeRequest& request,
               const PHFetchResult<PHAsset>& assets) {
    local::note(request, [assets](CatalogueConnection& connection, const CollectionChange& change) {
        local::addMembers(connection, local::rowOf(connection, change), assets);
    });
}

void addAssets(const PHAssetCollectionChangeRequest& request, const std::vector<PHAsset>& assets) {
    addAssets(request, PHFetchResult<PHAsset>{
                           std::make_shared<local::FetchedAssets>(local::KnownAssets{assets})});
}

void removeAssets(const PHAssetCollectionChangeRequest& request,
                  const PHFetchResult<PHAsset>& assets) {
    local::note(request, [assets](CatalogueConnection& connection, const CollectionChange& change) {
        local::removeMembers(connection, local::rowOf(connection, change), assets);
    });
}

void deleteAssetCollections(const PHFetchResult<PHAssetCollection>& albums) {
    local::noteDeletion(albums);
}

PHCollectionListChangeRequest creationRequestForCollectionListWithTitle(const std::string& title) {
    return local::begin<PHCollectionListChangeRequest>(title, local::kindFolder);
}

std::optional<PHObjectPlaceholder>
placeholderForCreatedCollectionList(const PHCollectionListChangeRequest& request) {
    return local::placeholder(request);
}

std::optional<PHCollectionListChangeRequest>
changeRequestForCollectionList(const PHCollectionList& folder) {
    return local::resume<PHCollectionListChangeRequest>(folder.localIdentifier, local::kindFolder);
}

void setTitle(const PHCollectionListChangeRequest& request, const std::string& title) {
    local::note(request, [title](CatalogueConnection& connection, const CollectionChange& change) {
        local::rename(connection, change, title);
    });
}

void addChildCollections(const PHCollectionListChangeRequest& request,
                         const std::vector<PHCollection>& children) {
    local::note(request,
                [children](CatalogueConnection& connection, const CollectionChange& change) {
                    const std::int64_t folder = local::rowOf(connection, change);
                    for (const PHCollection& child : children)
                        local::file(connection, local::recordOf(child).n, folder);
                });
}

void deleteCollectionLists(const PHFetchResult<PHCollectionList>& folders) {
    local::noteDeletion(folders);
}

} // namespace platform
