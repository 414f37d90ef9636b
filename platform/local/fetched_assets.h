// What stands behind a fetch result of assets.
#pragma once

#include "platform/local/album_assets.h"
#include "platform/local/listed_assets.h"

#include <variant>
#include <vector>

namespace local {

// Assets asked for by identifier are few and read at once, so that no snapshot is held while they
// are changed or copied.
struct KnownAssets {
    std::vector<platform::PHAsset> assets;

    std::size_t count() const { return assets.size(); }
    std::optional<platform::PHAsset> at(std::size_t index) const {
        return index < assets.size() ? std::optional(assets[index]) : std::nullopt;
    }
};

using FetchedAssets = std::variant<KnownAssets, ListedAssets, AlbumAssets>;

} // namespace local
