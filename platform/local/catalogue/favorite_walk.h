// Tells favourites apart in a walk over assets by creation time.
#pragma once

#include "platform/local/catalogue/catalogue_connection.h"
#include "platform/local/catalogue/listing_markers.h"

namespace local {

// Favourites stand in the same order as the assets: both are walked side by side, from the first
// asset that is asked about. Keys must be asked about in listing order.
class FavoriteWalk {
public:
    explicit FavoriteWalk(CatalogueConnection& connection);

    bool isFavorite(const ListingKey& key);

private:
    void step();

    Statement favorites_;
    std::optional<ListingKey> next_; // nothing before the first question
};

} // namespace local
