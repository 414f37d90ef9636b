// The albums that the library keeps by itself. Their contents are live.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace local {

inline constexpr int subtypeRecents = 209;

struct SmartAlbum {
    int subtype; // as the platform numbers them; also what its identifier ends with
    const char* title;
    const char* countColumn; // where its count is kept: a column of library or of smart_album
    const char* source;      // "SELECT <key> AS k, n FROM ... WHERE ...": its assets
    const char* key;         // the columns of its order, descending, as the source has them
    const char* condition;   // what an asset in it fulfils, on the table "asset"
    bool byCreation = true;  // the key is the creation time
};

// In the order in which they are listed.
std::span<const SmartAlbum> smartAlbums();

std::string identifierOf(const SmartAlbum& album);
const SmartAlbum* smartAlbumWithIdentifier(std::string_view identifier); // null: none

} // namespace local
