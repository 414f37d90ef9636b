// What stands behind a fetch result of assets.
#pragma once

#include "platform/local/fetch/album_assets.h"
#include "platform/local/fetch/listed_assets.h"
#include "platform/local/system/guarded.h"

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace local {

// A few assets asked for by identifier, read at once, so that no snapshot is held while they are
// changed or copied.
struct KnownAssets {
    std::vector<platform::PHAsset> assets;

    std::size_t count() const { return assets.size(); }
    std::optional<platform::PHAsset> at(std::size_t index) const {
        return index < assets.size() ? std::optional(assets[index]) : std::nullopt;
    }
};

// Many assets asked for by identifier. They are found at once, but most of what is done with many
// needs no more than their row numbers: records are read when somebody walks them, some at a time,
// as they are then.
class ManyAssets {
public:
    explicit ManyAssets(std::vector<std::int64_t> rowNumbers)
        : rowNumbers_(std::move(rowNumbers)) {}

    std::size_t count() const { return rowNumbers_.size(); }
    // Throws when the asset has gone since.
    std::optional<platform::PHAsset> at(std::size_t index);
    const std::vector<std::int64_t>& rowNumbers() const { return rowNumbers_; }

private:
    void readWindow(std::size_t start);

    std::vector<std::int64_t> rowNumbers_;
    std::size_t windowStart_ = 0;
    std::vector<std::optional<platform::PHAsset>> window_;
};

// A fetch that failed. It looks empty to whoever only reads, but no change may take it for that.
struct UnreadAssets {
    platform::NSError error;

    [[noreturn]] std::size_t count() const { throw LibraryError(error); }
    std::optional<platform::PHAsset> at(std::size_t) const { throw LibraryError(error); }
};

using FetchedAssets =
    std::variant<KnownAssets, ManyAssets, ListedAssets, AlbumAssets, UnreadAssets>;

// An album's one asset with the identifier, if it has it.
KnownAssets memberWithIdentifier(const AlbumOrder& order, const std::string& identifier);

// In the order in which they are asked for first.
FetchedAssets assetsWithIdentifiers(const std::vector<std::string>& identifiers);

// What `fetch` answers; a fetch that fails is told from an empty one by changes alone.
template <class Fetch>
platform::PHFetchResult<platform::PHAsset> assetResultOf(Fetch fetch) noexcept {
    using Result = platform::PHFetchResult<platform::PHAsset>;
    return orElse<Result>({}, [&]() -> Result {
        try {
            return {fetch()};
        } catch (const LibraryError& failure) {
            return {std::make_shared<FetchedAssets>(UnreadAssets{failure.error()})};
        }
    });
}

} // namespace local
