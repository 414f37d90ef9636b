#include "platform/local/library/stored_bytes.h"

#include "platform/local/library/library.h"

namespace local {

namespace {

constexpr const char* originalSql = "SELECT 0, stored_as, hash, size FROM asset WHERE n = ?1";
constexpr const char* renderSql = "SELECT 1, stored_as, hash, size FROM edit WHERE asset = ?1";
constexpr const char* currentSql =
    "SELECT edit.asset IS NOT NULL, ifnull(edit.stored_as, asset.stored_as), "
    "ifnull(edit.hash, asset.hash), ifnull(edit.size, asset.size) FROM asset "
    "LEFT JOIN edit ON edit.asset = asset.n WHERE asset.n = ?1";
constexpr const char* dataSql = "SELECT data FROM edit WHERE asset = ?1";

LibraryError gone() {
    return {platform::PHPhotosErrorDomain, invalidResourceCode,
            "The asset no longer has this file."};
}

std::optional<StoredFile> readFile(std::int64_t asset, const char* sql) {
    const ConnectionLease connection = Library::open()->connection();
    Statement row = connection->statement(sql);
    if (!row.bind(1, asset).step())
        return std::nullopt;
    return StoredFile{row.integer(0) != 0 ? Stored::render : Stored::original,
                      std::string(row.text(1)), row.bytes<ContentHash>(2), row.integer(3)};
}

StoredBytes openFile(std::int64_t asset, const char* sql) {
    auto file = readFile(asset, sql);
    for (;;) {
        if (!file)
            throw gone();
        try {
            return {
                Library::open()->files().open(file->kind, file->name), {}, file->hash, file->size};
        } catch (const LibraryError&) {
            // Another edit may have taken this one's place between the two steps.
            auto now = readFile(asset, sql);
            if (now && now->name == file->name)
                throw;
            file = std::move(now);
        }
    }
}

} // namespace

std::optional<StoredFile> currentFile(std::int64_t asset) {
    return readFile(asset, currentSql);
}

StoredBytes openResource(std::int64_t asset, long resourceType) {
    if (resourceType == platform::PHAssetResourceTypeFullSizePhoto)
        return openFile(asset, renderSql);
    if (resourceType != platform::PHAssetResourceTypeAdjustmentData)
        return openFile(asset, originalSql);
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
