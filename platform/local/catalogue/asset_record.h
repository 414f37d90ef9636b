// An asset's row in the catalogue.
#pragma once

#include "platform/asset.h"
#include "platform/local/catalogue/catalogue_connection.h"
#include "platform/local/system/uuid.h"

namespace local {

// Bits of asset.traits.
enum AssetTrait : std::int64_t {
    traitAnimated = 1,
    traitRaw = 2,
    traitScreenshot = 4,
    traitSelfie = 8,
    traitPanorama = 16,
};

// What stands behind a PHAsset of this library.
struct AssetRecord {
    std::int64_t n = 0;
    long media = 0;
    std::string filename; // the true one; what hosts are handed may differ
    std::string contentType;
    bool edited = false;
};

// The columns that assetFromRow reads, in its order; the table must be named "asset". The listing's
// index holds all of them but the two that are parameters: its fetches give constants for these.
#define PHOTOS_KIT_ASSET_COLUMNS(hidden, favorite)                                                 \
    "asset.n, asset.uuid, asset.created, asset.media, asset.width, asset.height, " hidden          \
    ", " favorite ", asset.filename, asset.content_type, asset.edited"

#define PHOTOS_KIT_IS_FAVORITE                                                                     \
    "EXISTS (SELECT 1 FROM favorite AS f WHERE f.created = asset.created AND f.asset = asset.n)"

platform::PHAsset assetFromRow(const Statement& row);

const AssetRecord& recordOf(const platform::PHAsset& asset);

std::string assetIdentifier(const Uuid& uuid);
// The uuid in an asset's identifier, as this library writes it; nothing for any other text.
std::optional<Uuid> uuidOfAssetIdentifier(std::string_view identifier);

// The seconds whose thousandfold, cut to an integer, is exactly `milliseconds`; of a date that no
// asset can have, the nearest that one can.
double exactSeconds(std::int64_t milliseconds);

} // namespace local
