#include "platform/local/fetch/album_order.h"

#include "platform/local/catalogue/asset_record.h"

#include <map>
#include <mutex>
#include <set>
#include <string>

namespace local {

namespace {

// Prepared statements are kept under their text's address, so texts that are put together here
// must never move or go.
const char* keep(const std::string& text) {
    static auto* const texts = new std::set<std::string>;
    return texts->insert(text).first->c_str();
}

struct Source {
    std::string select; // "SELECT <key> AS k, n FROM ... WHERE ..."
    std::string key;
    std::string direction;
    bool seekable = true;
    bool byCreation = true;
};

Source sourceOf(const AlbumOrder& order) {
    if (order.smart)
        return {order.smart->source, order.smart->key, "DESC", true, order.smart->byCreation};
    if (order.byPosition)
        return {"SELECT position AS k, asset AS n FROM album_member INDEXED BY album_order "
                "WHERE album = ?4 AND listed = 1",
                "position, asset", "ASC", false, false};
    return {"SELECT created AS k, asset AS n FROM album_member INDEXED BY album_listing "
            "WHERE album = ?4 AND listed = 1",
            "created, asset", "DESC"};
}

std::string orderBy(const Source& source) {
    const std::size_t comma = source.key.find(',');
    return " ORDER BY " + source.key.substr(0, comma) + " " + source.direction +
           source.key.substr(comma) + " " + source.direction;
}

std::string columnsWithFavorite() {
    return PHOTOS_KIT_ASSET_COLUMNS("asset.hidden", PHOTOS_KIT_IS_FAVORITE);
}

// The inner part picks the rows and their order and skips; only what is left is looked up.
std::string page(const Source& source) {
    const std::string from =
        source.seekable ? " AND (" + source.key + ") <= (?1, ?2)" : std::string();
    const std::string columns =
        source.byCreation ? PHOTOS_KIT_ASSET_COLUMNS("asset.hidden", "0") : columnsWithFavorite();
    return "SELECT " + columns + " FROM (" + source.select + from + orderBy(source) +
           " LIMIT -1 OFFSET ?3) AS o CROSS JOIN asset ON asset.n = o.n";
}

std::string limitedPage(const Source& source) {
    return "SELECT " + columnsWithFavorite() + " FROM (" + source.select + orderBy(source) +
           " LIMIT -1) AS o CROSS JOIN asset ON asset.n = o.n "
           "WHERE o.n IN (SELECT asset FROM limited_choice) LIMIT -1 OFFSET ?3";
}

std::string state(const AlbumOrder& order) {
    if (order.isListing())
        return "SELECT access, listed, listing_changes FROM library";
    if (order.smart)
        return std::string("SELECT library.access, ") + order.smart->countColumn +
               ", smart_album.changes FROM library, smart_album";
    return "SELECT library.access, collection.held, collection.changes FROM library, collection "
           "WHERE collection.n = ?4 AND collection.kind = 1";
}

std::string member(const AlbumOrder& order) {
    const std::string condition =
        order.smart ? order.smart->condition
                    : "EXISTS (SELECT 1 FROM album_member AS m WHERE m.album = ?4 "
                      "AND m.asset = asset.n AND m.listed = 1)";
    return "SELECT " + columnsWithFavorite() +
           " FROM asset CROSS JOIN library WHERE asset.uuid = ?5 AND (library.access = 3 OR "
           "(library.access = 4 AND asset.n IN (SELECT l.asset FROM limited_choice AS l))) AND " +
           condition;
}

AlbumStatements makeStatements(const AlbumOrder& order) {
    const Source source = sourceOf(order);
    return {keep(state(order)),
            keep(page(source)),
            keep(source.select + orderBy(source)),
            keep(limitedPage(source)),
            keep("SELECT count(*) FROM (" + source.select +
                 ") AS o WHERE o.n IN (SELECT asset FROM limited_choice)"),
            keep(member(order)),
            source.seekable,
            source.byCreation};
}

} // namespace

const AlbumStatements& statementsFor(const AlbumOrder& order) {
    // One set for each smart album and two for user albums, whichever they are.
    static auto* const made = new std::map<int, AlbumStatements>;
    static auto* const mutex = new std::mutex;
    const int kind = order.smart ? order.smart->subtype : order.byPosition ? 1 : 0;
    const std::scoped_lock lock(*mutex);
    const auto found = made->find(kind);
    return found != made->end() ? found->second
                                : made->emplace(kind, makeStatements(order)).first->second;
}

} // namespace local
