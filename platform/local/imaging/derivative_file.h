// Files of the folder "derivatives": "<first two digits of the key>/<key>.jpg". A cache that
// several processes share and anybody may delete at any time, so every failure here only means
// that there is no derivative. `folder` is the folder's descriptor, or -1.
#pragma once

#include "platform/local/unique_fd.h"

#include <cstdint>
#include <string>
#include <vector>

namespace local::imaging {

inline constexpr double kDerivativeSide = 512; // it covers a square of this side

UniqueFd openDerivative(int folder, const std::string& contentKey);
void removeDerivative(int folder, const std::string& contentKey);

// Appears whole or not at all, even across a power failure.
void writeDerivative(int folder, const std::string& contentKey,
                     const std::vector<std::uint8_t>& jpeg);

} // namespace local::imaging
