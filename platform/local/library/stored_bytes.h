// The bytes of an asset's resources, and whether they are still those that were stored.
#pragma once

#include "platform/asset.h"
#include "platform/local/store/file_store.h"

#include <optional>
#include <string>

namespace local {

// An open file of the store (or, for adjustment data, its bytes), with what it must amount to.
struct StoredBytes {
    UniqueFd file;
    platform::NSData data; // when there is no file
    ContentHash hash{};    // of a file
    std::int64_t size = 0; // of a file
};

// A file of the store, as the catalogue names it.
struct StoredFile {
    Stored kind = Stored::original;
    std::string name;
    ContentHash hash{};
    std::int64_t size = 0;
};

// The file with the asset's current picture; nothing when the asset is gone.
std::optional<StoredFile> currentFile(std::int64_t asset);

// Opens the asset's resource of this type as it is now. Throws LibraryError when the asset or the
// resource is gone, or its file cannot be opened.
StoredBytes openResource(std::int64_t asset, long resourceType);

// Reads the whole file; false when its bytes are not the right ones. Throws when it cannot be read.
bool isIntact(const StoredBytes& stored);

// The error of a file whose bytes are not those that were stored.
LibraryError damagedFile(long resourceType);

} // namespace local
