#include "platform/local/library/stored_bytes.h"

#include "platform/local/library/library.h"

namespace local {

namespace {

constexpr const char* originalSql = "SELECT stored_as, hash, size FROM asset WHERE n = ?1";
constexpr const char* renderSql = "SELECT stored_as, hash, size FROM edit WHERE asset = ?1";
constexpr const char* dataSql = "SELECT data FROM edit WHERE asset = ?1";

LibraryError gone() {
    return {platform::PHPhotosErrorDomain, invalidResourceCode,
            "The asset no longer has this file."};
}

struct Place {
    std::string name;
    StoredBytes bytes;
};

Place readPlace(std::int64_t asset, const char* sql) {
    const ConnectionLease connection = Library::open()->connection();
    Statement row = connection->statement(sql);
    if (!row.bind(1, asset).step())
        throw gone();
    Place place;
    place.name = row.text(0);
    place.bytes.hash = row.bytes<ContentHash>(1);
    place.bytes.size = row.integer(2);
    return place;
}

StoredBytes openFile(std::int64_t asset, Stored kind, const char* sql) {
    Place place = readPlace(asset, sql);
    try {
        place.bytes.file = Library::open()->files().open(kind, place.name);
    } catch (const LibraryError&) {
        // Another edit may have taken this one's place between the two steps.
        Place now = readPlace(asset, sql);
        if (now.name == place.name)
            throw;
        place = std::move(now);
        place.bytes.file = Library::open()->files().open(kind, place.name);
    }
    return std::move(place.bytes);
}

} // namespace

StoredBytes openResource(std::int64_t asset, long resourceType) {
    if (resourceType == platform::PHAssetResourceTypeFullSizePhoto)
        return openFile(asset, Stored::render, renderSql);
    if (resourceType != platform::PHAssetResourceTypeAdjustmentData)
        return openFile(asset, Stored::original, originalSql);
    const ConnectionLease connection = Library::open()->connection();
    Statement row = connection->statement(dataSql);
    if (!row.bind(1, asset).step())
        throw gone();
    StoredBytes stored;
    const auto data = row.blob(0);
    stored.data.assign(data.begin(), data.end());
    return stored;
}

bool isIntact(const StoredBytes& stored) {
    return hasContent(stored.file.get(), stored.hash, stored.size);
}

LibraryError damagedFile(long resourceType) {
    return {platform::PHPhotosErrorDomain, invalidResourceCode,
            resourceType == platform::PHAssetResourceTypeFullSizePhoto
                ? "The asset's edited picture is damaged: it is not the one that was stored."
                : "The asset's original is damaged: its bytes are not those that were imported."};
}

} // namespace local
