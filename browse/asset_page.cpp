#include "browse/asset_page.h"

#include <algorithm>

namespace {

// Roomy for one record with an ordinary file name, so that a page is written without moving it.
constexpr std::size_t typicalRecordLength = 256;

} // namespace

PageBounds boundsOfPage(std::size_t total, jint count, jint offset) {
    const auto wantedStart = static_cast<std::size_t>(std::max<jint>(offset, 0));
    const auto wantedCount = static_cast<std::size_t>(std::max<jint>(count, 0));
    const std::size_t start = std::min(total, wantedStart);
    return {start, std::min(total, start + wantedCount)};
}

std::string jsonOfPage(const platform::PHFetchResult<platform::PHAsset>& assets, PageBounds page,
                       AssetRecordVariant variant) {
    std::string json = "[";
    json.reserve((page.end - page.start) * typicalRecordLength + 2);
    for (std::size_t index = page.start; index < page.end; ++index) {
        const auto asset = assets.objectAtIndex(index);
        if (!asset)
            continue;
        if (json.size() > 1)
            json += ',';
        appendAssetRecord(json, *asset, variant);
    }
    json += ']';
    return json;
}
