// The JSON object that describes one asset in a listing.
#pragma once

#include "platform/asset.h"

#include <string>

enum class AssetRecordVariant {
    withoutHidden,
    withHidden, // adds "isHidden" as the last field
};

// Appends the record, without whitespace.
void appendAssetRecord(std::string& json, const platform::PHAsset& asset,
                       AssetRecordVariant variant);

// The original name of the first of the asset's files, in the library's order, that is a photo or
// a video, as imported or full-size; empty when that file has no name, or there is none. The
// order decides, not the kinds: a full-size photo that stands before the photo wins.
std::string primaryFilenameForAsset(const platform::PHAsset& asset);
