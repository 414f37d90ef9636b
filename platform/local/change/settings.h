// What the library's owner decides: what hosts may see and change, whether deletions are asked
// about, and how much room kept thumbnails may take. Kept in the catalogue, in force for every
// process from the next call on (library/access.h). Everything here throws LibraryError.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace local {

struct Settings {
    std::int64_t access = 0; // a PHAuthorizationStatus: 1 restricted, 2 denied, 3 full, 4 limited
    std::size_t limitedChoice = 0; // how many assets a limited access may see
    bool confirmDeletions = false;
    std::uint64_t derivativesRoom = 0; // bytes that kept thumbnails may take
};

Settings readSettings();

void grantFullAccess();
void denyAccess();

// Limits access to these assets alone; what the host imports itself joins them. Throws when one of
// them is not in the library, and then changes nothing.
void limitAccess(const std::vector<std::string>& identifiers);

void setConfirmDeletions(bool ask);

// What is too much goes at once.
void setDerivativesRoom(std::uint64_t bytes);

} // namespace local
