#include "platform/local/listing_markers.h"

#include <algorithm>

namespace local {

namespace {

constexpr std::int64_t stretchSize = 256;
constexpr std::int64_t longestStretch = 2 * stretchSize;

} // namespace

ListingMarkers::ListingMarkers(CatalogueConnection& connection, std::int64_t sequence)
    : sequence_(sequence) {
    stretches_.push_back({listingStart});
    Statement rows = connection.statement("SELECT created, n FROM asset INDEXED BY asset_listing "
                                          "WHERE hidden = 0 AND trashed_at IS NULL "
                                          "ORDER BY created DESC, n DESC");
    while (rows.step()) {
        if (stretches_.back().count == stretchSize)
            stretches_.push_back({{rows.integer(0), rows.integer(1)}});
        ++stretches_.back().count;
    }
    renumber();
}

bool ListingMarkers::bringUpTo(CatalogueConnection& connection, std::int64_t sequence) {
    if (sequence == sequence_)
        return true;
    Statement log = connection.statement("SELECT seq, old_created, new_created, asset "
                                         "FROM listing_change WHERE seq > ?1 ORDER BY seq");
    log.bind(1, sequence_);
    while (log.step()) {
        if (log.integer(0) != sequence_ + 1)
            return false;
        ++sequence_;
        const std::int64_t n = log.integer(3);
        if (!log.isNull(1) && --stretches_[stretchOf({log.integer(1), n})].count < 0)
            return false;
        if (!log.isNull(2))
            ++stretches_[stretchOf({log.integer(2), n})].count;
    }
    if (sequence_ != sequence)
        return false;
    divide(connection);
    renumber();
    return true;
}

std::size_t ListingMarkers::stretchOf(const ListingKey& key) const {
    const auto next =
        std::upper_bound(stretches_.begin() + 1, stretches_.end(), key,
                         [](const ListingKey& k, const Stretch& s) { return k.before(s.start); });
    return static_cast<std::size_t>(next - stretches_.begin()) - 1;
}

// Cuts stretches that have grown long and drops empty ones.
void ListingMarkers::divide(CatalogueConnection& connection) {
    const auto needsWork = [](const Stretch& s) {
        return s.count == 0 || s.count > longestStretch;
    };
    if (std::none_of(stretches_.begin() + 1, stretches_.end(), needsWork) &&
        stretches_.front().count <= longestStretch)
        return;
    std::vector<Stretch> divided;
    divided.reserve(stretches_.size() + 1);
    for (const Stretch& stretch : stretches_) {
        if (stretch.count == 0 && !divided.empty())
            continue;
        if (stretch.count <= longestStretch) {
            divided.push_back(stretch);
            continue;
        }
        Statement rows = connection.statement(
            "SELECT created, n FROM asset INDEXED BY asset_listing "
            "WHERE hidden = 0 AND trashed_at IS NULL AND (created, n) <= (?1, ?2) "
            "ORDER BY created DESC, n DESC LIMIT ?3");
        rows.bind(1, stretch.start.created).bind(2, stretch.start.n).bind(3, stretch.count);
        divided.push_back({stretch.start});
        while (rows.step()) {
            if (divided.back().count == stretchSize)
                divided.push_back({{rows.integer(0), rows.integer(1)}});
            ++divided.back().count;
        }
    }
    stretches_ = std::move(divided);
}

void ListingMarkers::renumber() {
    std::int64_t before = 0;
    for (Stretch& stretch : stretches_) {
        stretch.offset = before;
        before += stretch.count;
    }
    total_ = before;
}

ListingMarkers::Place ListingMarkers::locate(std::int64_t offset) const {
    const auto next =
        std::upper_bound(stretches_.begin() + 1, stretches_.end(), offset,
                         [](std::int64_t o, const Stretch& s) { return o < s.offset; });
    const Stretch& stretch = *(next - 1);
    return {stretch.start, offset - stretch.offset};
}

std::shared_ptr<const ListingMarkers> SharedListingMarkers::at(CatalogueConnection& connection,
                                                               std::int64_t sequence) {
    const std::scoped_lock lock(mutex_);
    if (kept_ && kept_->sequence() == sequence)
        return kept_;
    if (kept_ && kept_->sequence() > sequence)
        return nullptr;
    if (kept_) {
        // Fetches of other threads may still read the kept set: it is left to them as it is.
        auto next = std::make_shared<ListingMarkers>(*kept_);
        if (next->bringUpTo(connection, sequence))
            return kept_ = std::move(next);
    }
    return kept_ = std::make_shared<ListingMarkers>(connection, sequence);
}

bool SharedListingMarkers::areKept() {
    const std::scoped_lock lock(mutex_);
    return kept_ != nullptr;
}

} // namespace local
