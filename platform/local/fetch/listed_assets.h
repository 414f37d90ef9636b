// The whole library as a fetch shows it: a cursor in a snapshot of its own, so that a page costs
// its own rows wherever it lies.
#pragma once

#include "platform/asset.h"
#include "platform/local/catalogue/favorite_walk.h"
#include "platform/local/library/library.h"

#include <optional>

namespace local {

// The listed assets, newest first. Walking forwards steps one statement; any other access seeks.
class ListedAssets {
public:
    // `forWalking`: somebody will ask for more than the count.
    explicit ListedAssets(bool forWalking);

    std::size_t count() const { return static_cast<std::size_t>(count_); }
    std::optional<platform::PHAsset> at(std::size_t index);

private:
    void takeSnapshot();
    void seek(std::int64_t index);
    ListingMarkers::Place locate(std::int64_t index);

    ConnectionLease connection_;
    Statement state_;
    std::optional<Statement> rows_; // statements are done before the connection goes back
    std::optional<FavoriteWalk> favorites_;
    long access_ = 0;
    std::shared_ptr<const long> accessHere_;
    std::int64_t count_ = 0;
    std::int64_t sequence_ = 0;
    std::int64_t next_ = 0;
    std::shared_ptr<const ListingMarkers> markers_;
};

} // namespace local
