// The statements that walk the assets of an album or smart album in an order.
#pragma once

#include "platform/local/catalogue/smart_albums.h"

#include <cstdint>

namespace local {

// Which assets, in which order.
struct AlbumOrder {
    const SmartAlbum* smart = nullptr; // null: the user album with row number `album`
    std::int64_t album = 0;
    bool byPosition = false; // user albums: as they were added, instead of newest first

    // Whether it is the order of the whole library, whose markers it then shares.
    bool isListing() const { return smart && smart->subtype == subtypeRecents; }
    // One number for each order that markers can be kept for.
    std::int64_t key() const { return smart ? -smart->subtype : album; }
};

// Statements with these parameters: ?1 and ?2 the key to begin at, ?3 how many to skip from
// there, ?4 the user album's row number. The texts live as long as the process.
struct AlbumStatements {
    const char* state; // access, count, number of the newest change; no row: the album is gone
    const char* page;  // the columns of assetFromRow
    const char* keys;  // the whole order: key, n
    const char* limitedPage; // within the limited choice; ?3 counts from the start
    const char* limitedCount;
    const char* member; // the asset with uuid ?5, if the album has it and it may be seen
    bool seekable;      // the page can begin at a key
    bool byCreation;    // the key is the creation time
};

const AlbumStatements& statementsFor(const AlbumOrder& order);

} // namespace local
