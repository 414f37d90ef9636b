#include "platform/local/catalogue/asset_record.h"

#include "platform/local/catalogue/possible_dates.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace local {

namespace {

constexpr std::string_view assetEnding = "/L0/001";

} // namespace

std::string assetIdentifier(const Uuid& uuid) {
    std::string identifier = uppercaseText(uuid);
    identifier.append(assetEnding);
    return identifier;
}

std::optional<Uuid> uuidOfAssetIdentifier(std::string_view identifier) {
    if (!identifier.ends_with(assetEnding))
        return std::nullopt;
    return uuidFromText(identifier.substr(0, identifier.size() - assetEnding.size()));
}

double exactSeconds(std::int64_t milliseconds) {
    milliseconds = std::clamp(milliseconds, earliestDate, latestDate);
    const double seconds = static_cast<double>(milliseconds) / 1000.0;
    if (static_cast<std::int64_t>(seconds * 1000.0) == milliseconds)
        return seconds;
    // The quotient is half a step off at most, and a step is less than a millisecond.
    const double away = milliseconds < 0 ? -std::numeric_limits<double>::infinity()
                                         : std::numeric_limits<double>::infinity();
    return std::nextafter(seconds, away);
}

platform::PHAsset assetFromRow(const Statement& row) {
    const auto record = std::make_shared<AssetRecord>();
    record->n = row.integer(0);
    record->media = static_cast<long>(row.integer(3));
    record->filename = row.text(8);
    record->contentType = row.text(9);
    record->edited = row.integer(10) != 0;

    platform::PHAsset asset;
    asset.localIdentifier = assetIdentifier(row.bytes<Uuid>(1));
    asset.mediaType = record->media;
    asset.pixelWidth = static_cast<unsigned long>(row.integer(4));
    asset.pixelHeight = static_cast<unsigned long>(row.integer(5));
    asset.creationDate = exactSeconds(row.integer(2));
    asset.isHidden = row.integer(6) != 0;
    asset.isFavorite = row.integer(7) != 0;
    asset.object = record;
    return asset;
}

const AssetRecord& recordOf(const platform::PHAsset& asset) {
    return *static_cast<const AssetRecord*>(asset.object.get());
}

} // namespace local
