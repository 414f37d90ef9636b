// What a change block has asked for, collected until the block is done and then carried out.
#pragma once

#include "platform/change_requests.h"
#include "platform/local/catalogue_connection.h"
#include "platform/local/file_store.h"

#include <functional>
#include <memory>
#include <vector>

namespace local {

// A wish for one new asset.
struct AssetCreation {
    Uuid uuid{};
    long resourceType = 0; // 0: no resource was added
    std::string sourcePath;
    std::string originalFilename;
};

struct ChangeTransaction {
    std::vector<std::shared_ptr<AssetCreation>> assetCreations;
    // Run in this order inside the write transaction, after the new assets are in; one that
    // throws refuses all.
    std::vector<std::function<void(CatalogueConnection&)>> steps;

    // The one whose block runs on this thread; null outside a block.
    static ChangeTransaction* current();

    // Makes this the current one for the length of `block`.
    void collect(const std::function<void()>& block);
};

} // namespace local
