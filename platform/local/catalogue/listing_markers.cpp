#include "platform/local/catalogue/listing_markers.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace local {

namespace {

constexpr std::int32_t stretchSize = 256;
constexpr std::int32_t longestStretch = 2 * stretchSize;

// An album's order is smaller and its rows cost more to skip.
constexpr std::int32_t albumStretchSize = 32;

// Cuts an order of keys into stretches as it is walked.
struct Stretches {
    std::int32_t size = stretchSize;
    std::vector<ListingKey> starts;
    std::vector<std::int32_t> counts;

    void begin(const ListingKey& start, std::int32_t count) {
        starts.push_back(start);
        counts.push_back(count);
    }

    void walk(Statement& rows) {
        while (rows.step()) {
            if (counts.back() == size)
                begin({rows.integer(0), rows.integer(1)}, 0);
            ++counts.back();
        }
    }
};

} // namespace

ListingMarkers::ListingMarkers(CatalogueConnection& connection, std::int64_t sequence)
    : sequence_(sequence) {
    Statement rows = connection.statement("SELECT created, n FROM asset INDEXED BY asset_listing "
                                          "WHERE hidden = 0 AND trashed_at IS NULL "
                                          "ORDER BY created DESC, n DESC");
    take(rows, stretchSize);
    Statement change = connection.statement("SELECT seq, old_created, new_created, asset "
                                            "FROM listing_change WHERE seq = ?1");
    if (change.bind(1, sequence).step())
        newest_ = changeOf(change);
}

ListingMarkers::Change ListingMarkers::changeOf(const Statement& log) {
    return {log.integer(3), log.integer(log.isNull(2) ? 1 : 2)};
}

ListingMarkers::ListingMarkers(Statement& keys, std::int64_t version) : sequence_(version) {
    take(keys, albumStretchSize);
}

void ListingMarkers::take(Statement& keys, std::int32_t size) {
    Stretches stretches;
    stretches.size = size;
    stretches.begin(listingStart, 0);
    stretches.walk(keys);
    starts_ = std::make_shared<const std::vector<ListingKey>>(std::move(stretches.starts));
    counts_ = std::move(stretches.counts);
    renumber();
}

bool ListingMarkers::bringUpTo(CatalogueConnection& connection, std::int64_t sequence) {
    Statement log = connection.statement("SELECT seq, old_created, new_created, asset "
                                         "FROM listing_change WHERE seq >= ?1 ORDER BY seq");
    log.bind(1, sequence_);
    bool outgrown = false;
    // A few changes are cheaper to carry through the offsets one by one than to sum up anew.
    const bool few = sequence - sequence_ <= 16;
    const auto count = [&](std::int64_t created, std::int32_t change) {
        const std::size_t stretch = stretchOf({created, log.integer(3)});
        counts_[stretch] += change;
        outgrown |= counts_[stretch] == 0 || counts_[stretch] > longestStretch;
        if (few)
            shift(stretch, change);
        return counts_[stretch] >= 0;
    };
    while (log.step()) {
        if (log.integer(0) == sequence_) { // can only be the first
            if (newest_ && *newest_ != changeOf(log))
                return false;
            continue;
        }
        if (log.integer(0) != sequence_ + 1)
            return false;
        ++sequence_;
        newest_ = changeOf(log);
        if (!log.isNull(1) && !count(log.integer(1), -1))
            return false;
        if (!log.isNull(2) && !count(log.integer(2), 1))
            return false;
    }
    if (sequence_ != sequence)
        return false;
    if (outgrown)
        divide(connection);
    if (outgrown || !few)
        renumber();
    return true;
}

// What one asset more or less in a stretch does to the offsets behind it.
void ListingMarkers::shift(std::size_t stretch, std::int32_t change) {
    for (std::size_t i = stretch + 1; i < offsets_.size(); ++i)
        offsets_[i] += change;
    total_ += change;
}

std::size_t ListingMarkers::stretchOf(const ListingKey& key) const {
    const auto next =
        std::upper_bound(starts_->begin() + 1, starts_->end(), key,
                         [](const ListingKey& k, const ListingKey& s) { return k.before(s); });
    return static_cast<std::size_t>(next - starts_->begin()) - 1;
}

// Cuts stretches that have grown long and drops empty ones.
void ListingMarkers::divide(CatalogueConnection& connection) {
    Stretches divided;
    for (std::size_t i = 0; i < counts_.size(); ++i) {
        const ListingKey& start = (*starts_)[i];
        if (counts_[i] == 0 && i > 0)
            continue;
        if (counts_[i] <= longestStretch) {
            divided.begin(start, counts_[i]);
            continue;
        }
        Statement rows = connection.statement(
            "SELECT created, n FROM asset INDEXED BY asset_listing "
            "WHERE hidden = 0 AND trashed_at IS NULL AND (created, n) <= (?1, ?2) "
            "ORDER BY created DESC, n DESC LIMIT ?3");
        rows.bind(1, start.created).bind(2, start.n).bind(3, std::int64_t{counts_[i]});
        divided.begin(start, 0);
        divided.walk(rows);
    }
    starts_ = std::make_shared<const std::vector<ListingKey>>(std::move(divided.starts));
    counts_ = std::move(divided.counts);
}

void ListingMarkers::renumber() {
    offsets_.resize(counts_.size());
    std::exclusive_scan(counts_.begin(), counts_.end(), offsets_.begin(), 0);
    total_ = std::int64_t{offsets_.back()} + counts_.back();
}

ListingMarkers::Place ListingMarkers::locate(std::int64_t offset) const {
    const auto next = std::upper_bound(offsets_.begin() + 1, offsets_.end(), offset);
    const auto stretch = static_cast<std::size_t>(next - offsets_.begin()) - 1;
    return {(*starts_)[stretch], offset - offsets_[stretch]};
}

std::shared_ptr<const ListingMarkers>
AlbumMarkers::at(std::int64_t album, std::int64_t version,
                 const std::function<ListingMarkers()>& make) {
    // More than a person pages through at a time; beyond that they are made when needed.
    constexpr std::size_t mostKept = 16;
    {
        const std::scoped_lock lock(mutex_);
        const auto kept = kept_.find(album);
        if (kept != kept_.end() && kept->second->sequence() == version)
            return kept->second;
    }
    auto made = std::make_shared<const ListingMarkers>(make());
    const std::scoped_lock lock(mutex_);
    if (kept_.size() >= mostKept)
        kept_.clear();
    return kept_[album] = std::move(made);
}

std::shared_ptr<const ListingMarkers> SharedListingMarkers::at(CatalogueConnection& connection,
                                                               std::int64_t sequence) {
    const std::scoped_lock lock(mutex_);
    if (kept_ && kept_->sequence() == sequence)
        return kept_;
    if (kept_ && kept_->sequence() > sequence)
        return nullptr;
    if (kept_) {
        // Fetches of other threads may still read the kept set: then it is left to them as it is.
        // While it is changed nobody keeps it, so that a failure leaves nothing half brought up.
        auto next = std::exchange(kept_, nullptr);
        if (next.use_count() > 1)
            next = std::make_shared<ListingMarkers>(*next);
        if (next->bringUpTo(connection, sequence))
            return kept_ = std::move(next);
    }
    return kept_ = std::make_shared<ListingMarkers>(connection, sequence);
}

std::shared_ptr<const ListingMarkers>
SharedListingMarkers::forNewSnapshot(CatalogueConnection& connection,
                                     const std::function<std::int64_t()>& takeSnapshot) {
    std::int64_t sequence = takeSnapshot();
    if (!areKept())
        return nullptr;
    constexpr int mostTries = 2; // another thread may have been quicker
    for (int tries = 0; tries < mostTries; ++tries) {
        if (auto markers = at(connection, sequence))
            return markers;
        sequence = takeSnapshot();
    }
    auto made = std::make_shared<ListingMarkers>(connection, sequence);
    const std::scoped_lock lock(mutex_);
    return kept_ = std::move(made);
}

bool SharedListingMarkers::areKept() {
    const std::scoped_lock lock(mutex_);
    return kept_ != nullptr;
}

} // namespace local
