// Markers into the order of the listed assets, newest first: one for about every 256 of them, so
// that a page at any offset is found by one seek and a short walk. A process keeps one set and
// brings it up to date from the catalogue's log of changed keys.
#pragma once

#include "platform/local/catalogue/catalogue_connection.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
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

// Up to here a walk from the start costs no more than making markers would.
inline constexpr std::int64_t walkedWithoutMarkers = 512;

class ListingMarkers {
public:
    // Reads the whole order of the library once; within the caller's snapshot.
    ListingMarkers(CatalogueConnection& connection, std::int64_t sequence);

    // Markers into any order that descends by (key, row number), from rows of these two. They
    // are never brought up to date: `version` tells when they no longer fit.
    ListingMarkers(Statement& keys, std::int64_t version);

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
    // A change of the listing, as the catalogue's log has it.
    struct Change {
        std::int64_t asset = 0;
        std::int64_t created = 0; // the new time, or the old one of an asset that left
        bool operator==(const Change&) const = default;
    };
    static Change changeOf(const Statement& log);

    void take(Statement& keys, std::int32_t size);

    // Stretch i of the order goes from starts_[i] up to the next one's start, holds counts_[i]
    // assets, and offsets_[i] assets come before it. The starts change rarely: versions of the
    // set share them.
    std::size_t stretchOf(const ListingKey& key) const;
    void divide(CatalogueConnection& connection);
    void renumber();
    void shift(std::size_t stretch, std::int32_t change);

    std::shared_ptr<const std::vector<ListingKey>> starts_;
    std::vector<std::int32_t> counts_;
    std::vector<std::int32_t> offsets_;
    std::int64_t total_ = 0;
    std::int64_t sequence_ = 0;
    // The change with this set's number, if the log had it: another catalogue, put in this one's
    // place, has another one under it.
    std::optional<Change> newest_;
};

// Markers into the orders of a few albums, made anew when an album has changed.
class AlbumMarkers {
public:
    // Those of the album with this key, if they are of this version; else what `make` makes.
    std::shared_ptr<const ListingMarkers> at(std::int64_t album, std::int64_t version,
                                             const std::function<ListingMarkers()>& make);

private:
    std::mutex mutex_;
    std::map<std::int64_t, std::shared_ptr<const ListingMarkers>> kept_;
};

// This process's markers, as they fit the given snapshot's sequence number; made or brought up to
// date as needed. Nothing when other threads have moved them beyond this snapshot already.
class SharedListingMarkers {
public:
    std::shared_ptr<const ListingMarkers> at(CatalogueConnection& connection,
                                             std::int64_t sequence);

    // Takes a snapshot, by a function that answers its sequence number and may be called again for
    // a newer one, and answers the markers that fit it. Nothing when none are kept yet: few pages
    // need them. Where even newer snapshots lie behind the markers, the catalogue is one that was
    // put back: the markers are made anew.
    std::shared_ptr<const ListingMarkers>
    forNewSnapshot(CatalogueConnection& connection,
                   const std::function<std::int64_t()>& takeSnapshot);

private:
    bool areKept();

    std::mutex mutex_;
    std::shared_ptr<ListingMarkers> kept_;
};

} // namespace local
