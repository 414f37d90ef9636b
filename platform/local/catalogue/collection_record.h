// An album or folder, or a smart album, behind the facade's values.
#pragma once

#include "platform/collection.h"
#include "platform/local/catalogue/catalogue_connection.h"
#include "platform/local/catalogue/smart_albums.h"
#include "platform/local/system/uuid.h"

#include <optional>

namespace local {

enum CollectionKind : std::int64_t { kindAlbum = 1, kindFolder = 2 };

struct CollectionRecord {
    std::int64_t n = 0;                // 0 for a smart album
    const SmartAlbum* smart = nullptr; // null for the user's own
    // How much it holds (listed assets, or collections) as the fetch saw it. Nothing when that
    // depends on the choice that access is limited to.
    std::optional<std::int64_t> knownCount;
    std::optional<std::string> title; // the true one; what hosts are handed may differ
};

const CollectionRecord& recordOf(const platform::PHAssetCollection& album);
const CollectionRecord& recordOf(const platform::PHCollectionList& folder);
const CollectionRecord& recordOf(const platform::PHCollection& collection);

// A row of the table "collection", from the columns below.
struct CollectionRow {
    Uuid uuid{};
    CollectionKind kind = kindAlbum;
    CollectionRecord record;
};

#define PHOTOS_KIT_COLLECTION_COLUMNS                                                              \
    "collection.n, collection.uuid, collection.kind, collection.title, collection.held"

CollectionRow collectionRow(const Statement& row, bool limitedAccess);
// The collection keeps the row (or what that is a part of) as its record.
platform::PHCollection collectionOf(std::shared_ptr<const CollectionRow> row);
platform::PHAssetCollection collectionOf(const SmartAlbum& album,
                                         std::optional<std::int64_t> knownCount);

std::string collectionIdentifier(const Uuid& uuid, CollectionKind kind);
// The uuid in an album's or folder's identifier; nothing for any other text.
std::optional<Uuid> uuidOfCollectionIdentifier(std::string_view identifier, CollectionKind kind);

} // namespace local
