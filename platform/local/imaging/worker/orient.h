// Turns a picture upright.
#pragma once

#include "platform/local/imaging/worker/picture.h"

namespace local::imaging {

// Writes the picture as its orientation says to `to`, which has room for as many bytes as it has
// and overlaps nothing.
void writeUpright(const Picture& picture, std::uint8_t* to);

} // namespace local::imaging
