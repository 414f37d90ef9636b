// The trash: deleted assets, whole, until somebody empties it. Nothing empties it by itself.
#pragma once

#include "platform/local/catalogue/catalogue_connection.h"

#include <cstdint>
#include <string>
#include <vector>

namespace local {

// Emptying the trash leaves what was deleted less long ago, unless told otherwise.
inline constexpr std::int64_t keptInTrashMilliseconds = std::int64_t{30} * 24 * 60 * 60 * 1000;

// A step of a write transaction; `numbers` is a JSON array of row numbers. Assets that are there
// already, or gone, do not matter.
void moveToTrash(CatalogueConnection& connection, const std::string& numbers);

struct TrashedAsset {
    std::string localIdentifier;
    std::string filename;
    std::int64_t trashedAt = 0; // milliseconds since 1970
    std::int64_t size = 0;      // bytes of the original
};

// The trash as it is now, newest deletion first. These three throw LibraryError.
std::vector<TrashedAsset> listTrash();

// Puts assets back as they were: marks, albums and edits stayed with them. Answers how many were in
// the trash.
std::size_t restoreFromTrash(const std::vector<std::string>& identifiers);

// What was put there before it was imported, by a clock that stood at 1970 for instance, counts as
// put there now: nobody knows since when it has been there.
void dateImpossibleDeletions();

// Deletes for good, with their files, the assets that were put into the trash before `before`
// (milliseconds since 1970). Answers how many.
std::size_t emptyTrash(std::int64_t before);

} // namespace local
