// How much the library holds, all of it, whatever hosts may see.
#pragma once

#include <cstdint>

namespace local {

// Counts are of assets unless they say otherwise; those in the trash are in `trashed` only.
struct LibraryCounts {
    std::int64_t photos = 0;
    std::int64_t videos = 0;
    std::int64_t hidden = 0;    // photos and videos among those above
    std::int64_t favorites = 0; // likewise
    std::int64_t trashed = 0;
    std::int64_t albums = 0;        // the user's albums
    std::int64_t folders = 0;       // and folders
    std::int64_t originalBytes = 0; // the trash included
    std::int64_t trashedBytes = 0;  // originals in the trash
    std::int64_t editBytes = 0;     // rendered pictures, the trash included
};

// As the library is now. Reads every asset's row, so it takes about a second for a million. Throws
// LibraryError.
LibraryCounts countLibrary();

} // namespace local
