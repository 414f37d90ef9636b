// What a change block has asked for, collected until the block is done and then carried out.
#pragma once

#include "platform/change_requests.h"
#include "platform/content_editing.h"
#include "platform/local/catalogue/catalogue_connection.h"
#include "platform/local/store/edit_folder.h"
#include "platform/local/store/file_store.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace local {

// A wish for one new asset.
struct AssetCreation {
    Uuid uuid{};
    long resourceType = 0; // 0: no resource was added
    std::string sourcePath;
    std::string originalFilename;
};

// A wish to make a rendered picture an asset's current version.
struct EditWish {
    std::int64_t asset = 0; // row number
    std::shared_ptr<const EditFolder> folder;
    platform::PHAdjustmentData adjustmentData;
};

// A wish for the same mark on assets that were named one after the other.
struct MarkWish {
    enum class Mark { favorite, hidden };
    Mark mark = Mark::favorite;
    bool value = false;
    std::vector<std::int64_t> assets; // row numbers
};

struct ChangeTransaction {
    std::vector<std::shared_ptr<AssetCreation>> assetCreations;
    std::vector<EditWish> edits;
    std::size_t deletedAssets = 0; // how many the user is to be asked about
    // Run in this order inside the write transaction, after the new assets are in; one that
    // throws refuses all.
    std::vector<std::function<void(CatalogueConnection&)>> steps;
    // That of the newest step, while assets can still join it.
    std::shared_ptr<MarkWish> openMarks;
    std::size_t openMarksStep = 0;

    // Why it cannot be carried out, when that is known already.
    std::optional<platform::NSError> refusal;

    // The one whose block runs on this thread; null outside a block.
    static ChangeTransaction* current();

    // Makes this the current one for the length of `block`.
    void collect(const std::function<void()>& block);
};

} // namespace local
