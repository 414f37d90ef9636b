// Markers into the order of the listed assets, newest first: one for about every 256 of them, so
// that a page at any offset is found by one seek and a short walk. A process keeps one set and
// brings it up to date from the catalogue's log of changed keys.
#pragma once

#include "platform/local/catalogue_connection.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <vector>

namespace local {

// A place in the listing order: descending by both members.
struct ListingKey {
    std::int64_t created = 0; // milliseconds since 1970
    std::int64_t n = 0;

    // Whether this key comes earlier in the listing.
    bool before(const ListingKey& other) const {
        return created != other.created ? created > other.created : n > other.n;
    }
};

inline constexpr ListingKey listingStart{std::numeric_limits<std::int64_t>::max(),
                                         std::numeric_limits<std::int64_t>::max()};

inline constexpr ListingKey listingEnd{std::numeric_limits<std::int64_t>::min(),
                                       std::numeric_limits<std::int64_t>::min()};

class ListingMarkers {
public:
    // Reads the whole order once; within the caller's snapshot.
    ListingMarkers(CatalogueConnection& connection, std::int64_t sequence);

    // Applies the log from this set's sequence number to the snapshot's; false when the log no
    // longer reaches back that far, or does not fit.
    [[nodiscard]] bool bringUpTo(CatalogueConnection& connection, std::int64_t sequence);

    std::int64_t sequence() const { return sequence_; }
    std::int64_t total() const { return total_; }

    // Where to begin in order to reach the asset at `offset`: at the first key that is not before
    // `key`, then `skip` further. The offset must be below total().
    struct Place {
        ListingKey key;
        std::int64_t skip = 0;
    };
    Place locate(std::int64_t offset) const;

private:
    // Stretch i of the order goes from starts_[i] up to the next one's start, holds counts_[i]
    // assets, and offsets_[i] assets come before it. The starts change rarely: versions of the
    // set share them.
    std::size_t stretchOf(const ListingKey& key) const;
    void divide(CatalogueConnection& connection);
    void renumber();

    std::shared_ptr<const std::vector<ListingKey>> starts_;
    std::vector<std::int32_t> counts_;
    std::vector<std::int32_t> offsets_;
    std::int64_t total_ = 0;
    std::int64_t sequence_ = 0;
};

// This process's markers, as they fit the given snapshot's sequence number; made or brought up to
// date as needed. Nothing when other threads have moved them beyond this snapshot already.
class SharedListingMarkers {
public:
    std::shared_ptr<const ListingMarkers> at(CatalogueConnection& connection,
                                             std::int64_t sequence);
    bool areKept();

private:
    std::mutex mutex_;
    std::shared_ptr<const ListingMarkers> kept_;
};

} // namespace local
