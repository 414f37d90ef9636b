#include "browse/asset_record.h"

#include "bridge/json_text.h"

#include <cstddef>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

namespace {

bool isPrimaryResourceType(long type) {
    return type == platform::PHAssetResourceTypePhoto ||
           type == platform::PHAssetResourceTypeFullSizePhoto ||
           type == platform::PHAssetResourceTypeVideo ||
           type == platform::PHAssetResourceTypeFullSizeVideo;
}

// The longest start of the text that has at most `limit` UTF-16 units and ends with a whole
// character.
std::string_view firstUtf16Units(std::string_view text, std::size_t limit) {
    std::size_t units = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xC0) == 0x80) // inside a character
            continue;
        units += byte >= 0xF0 ? 2 : 1;
        if (units > limit)
            return text.substr(0, i);
    }
    return text;
}

std::string filenameToShow(const platform::PHAsset& asset) {
    std::string filename = primaryFilenameForAsset(asset);
    if (!filename.empty())
        return filename;
    filename = firstUtf16Units(asset.localIdentifier, 8);
    filename += asset.mediaType == platform::PHAssetMediaTypeVideo ? ".mov" : ".jpg";
    return filename;
}

// Truncated toward zero; a date beyond the range of the result gives its nearest end.
long long millisecondsSince1970(std::optional<double> seconds) {
    if (!seconds)
        return 0;
    const double milliseconds = *seconds * 1000.0;
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (milliseconds >= limit)
        return std::numeric_limits<long long>::max();
    if (milliseconds <= -limit)
        return std::numeric_limits<long long>::min();
    return milliseconds == milliseconds ? static_cast<long long>(milliseconds) : 0;
}

} // namespace

std::string primaryFilenameForAsset(const platform::PHAsset& asset) {
    for (auto& resource : platform::assetResourcesForAsset(asset)) {
        if (isPrimaryResourceType(resource.type))
            return std::move(resource.originalFilename).value_or(std::string());
    }
    return {};
}

void appendAssetRecord(std::string& json, const platform::PHAsset& asset,
                       AssetRecordVariant variant) {
    json += "{\"id\":";
    appendJsonString(json, asset.localIdentifier);
    json += ",\"filename\":";
    appendJsonString(json, filenameToShow(asset));
    json += ",\"isVideo\":";
    appendJsonBoolean(json, asset.mediaType == platform::PHAssetMediaTypeVideo);
    json += ",\"width\":";
    appendJsonNumber(json, asset.pixelWidth);
    json += ",\"height\":";
    appendJsonNumber(json, asset.pixelHeight);
    json += ",\"createdMs\":";
    appendJsonNumber(json, millisecondsSince1970(asset.creationDate));
    json += ",\"isFavorite\":";
    appendJsonBoolean(json, asset.isFavorite);
    if (variant == AssetRecordVariant::withHidden) {
        json += ",\"isHidden\":";
        appendJsonBoolean(json, asset.isHidden);
    }
    json += '}';
}
