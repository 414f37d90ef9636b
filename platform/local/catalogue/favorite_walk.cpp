#include "platform/local/catalogue/favorite_walk.h"

namespace local {

FavoriteWalk::FavoriteWalk(CatalogueConnection& connection)
    : favorites_(connection.statement("SELECT created, asset FROM favorite "
                                      "WHERE (created, asset) <= (?1, ?2) "
                                      "ORDER BY created DESC, asset DESC")) {}

bool FavoriteWalk::isFavorite(const ListingKey& key) {
    if (!next_) {
        favorites_.bind(1, key.created).bind(2, key.n);
        step();
    }
    while (next_->before(key))
        step();
    return !key.before(*next_);
}

void FavoriteWalk::step() {
    const bool more = favorites_.step();
    next_ = more ? ListingKey{favorites_.integer(0), favorites_.integer(1)} : listingEnd;
}

} // namespace local
