// The assets of an album or smart album as a fetch shows them.
#pragma once

#include "platform/asset.h"
#include "platform/local/catalogue/favorite_walk.h"
#include "platform/local/fetch/album_order.h"
#include "platform/local/library/library.h"

#include <memory>
#include <optional>

namespace local {

// A fetch whose count is known already opens nothing until somebody walks it.
class AlbumAssets {
public:
    AlbumAssets(const AlbumOrder& order, std::optional<std::int64_t> knownCount);

    std::size_t count();
    std::optional<platform::PHAsset> at(std::size_t index);
    const AlbumOrder& order() const { return order_; }

private:
    // A snapshot and a walk through it.
    struct Walk {
        explicit Walk(const AlbumOrder& order);

        void takeSnapshot();
        std::optional<platform::PHAsset> at(const AlbumOrder& order, std::int64_t index);
        void seek(const AlbumOrder& order, std::int64_t index);
        ListingMarkers::Place locate(const AlbumOrder& order, std::int64_t index);

        const AlbumStatements& statements;
        ConnectionLease connection;
        Statement state;
        std::optional<Statement> rows;
        std::optional<FavoriteWalk> favorites;
        bool limited = false;
        std::int64_t count = 0;
        std::int64_t version = 0;
        std::int64_t next = 0;
        std::shared_ptr<const ListingMarkers> markers;
    };

    AlbumOrder order_;
    std::optional<std::int64_t> knownCount_;
    std::unique_ptr<Walk> walk_;
};

} // namespace local
