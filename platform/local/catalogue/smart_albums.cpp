#include "platform/local/catalogue/smart_albums.h"

#include "platform/local/catalogue/asset_record.h"

#include <algorithm>
#include <array>

namespace local {

namespace {

constexpr std::string_view identifierStart = "00000000-0000-0000-0000-000000000";
constexpr std::string_view identifierEnd = "/L0/040";

#define LISTED "hidden = 0 AND trashed_at IS NULL"
#define BY_CREATION(index, condition)                                                              \
    "SELECT created AS k, n FROM asset INDEXED BY " index " WHERE " condition, "created, n",       \
        condition

constexpr std::array albums{
    SmartAlbum{subtypeRecents, "Recents", "library.listed", BY_CREATION("asset_listing", LISTED)},
    SmartAlbum{203, "Favorites", "smart_album.favorites",
               "SELECT f.created AS k, f.asset AS n FROM favorite AS f WHERE "
               "(SELECT " LISTED " FROM asset AS a WHERE a.n = f.asset)",
               "f.created, f.asset", LISTED " AND " PHOTOS_KIT_IS_FAVORITE},
    SmartAlbum{202, "Videos", "smart_album.videos",
               BY_CREATION("asset_videos", LISTED " AND media = 2")},
    SmartAlbum{210, "Selfies", "smart_album.selfies",
               BY_CREATION("asset_selfies", LISTED " AND traits & 8")},
    SmartAlbum{201, "Panoramas", "smart_album.panoramas",
               BY_CREATION("asset_panoramas", LISTED " AND traits & 16")},
    SmartAlbum{211, "Screenshots", "smart_album.screenshots",
               BY_CREATION("asset_screenshots", LISTED " AND traits & 4")},
    SmartAlbum{214, "Animated", "smart_album.animated",
               BY_CREATION("asset_animated", LISTED " AND traits & 1")},
    SmartAlbum{217, "RAW", "smart_album.raw", BY_CREATION("asset_raw", LISTED " AND traits & 2")},
    SmartAlbum{206, "Recently Added", "library.listed",
               "SELECT added AS k, n FROM asset INDEXED BY asset_added WHERE " LISTED, "added, n",
               LISTED, false},
    SmartAlbum{205, "Hidden", "smart_album.hidden",
               BY_CREATION("asset_hidden", "hidden = 1 AND trashed_at IS NULL")},
};

#undef BY_CREATION
#undef LISTED

} // namespace

std::span<const SmartAlbum> smartAlbums() {
    return albums;
}

std::string identifierOf(const SmartAlbum& album) {
    std::string identifier(identifierStart);
    identifier += std::to_string(album.subtype);
    identifier += identifierEnd;
    return identifier;
}

const SmartAlbum* smartAlbumWithIdentifier(std::string_view identifier) {
    if (!identifier.starts_with(identifierStart))
        return nullptr;
    const auto* found = std::find_if(albums.begin(), albums.end(), [&](const SmartAlbum& album) {
        return identifierOf(album) == identifier;
    });
    return found == albums.end() ? nullptr : found;
}

} // namespace local
