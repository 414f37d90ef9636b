// Camera RAW, by LibRaw.
#pragma once

#include "platform/local/imaging/worker/input.h"
#include "platform/local/imaging/worker/picture.h"

namespace local::imaging {

// `captured` stands for LibRaw's own reading of the date where it is set: it knows no fractions
// and no offsets.
Info inspectRaw(const FileInput& input, FileFormat format, std::optional<CaptureTime> captured);

// From the embedded preview where it covers the target, else developed at half size, or at full
// size where that is not enough.
Picture rawPicture(const FileInput& input, const Target& target);

} // namespace local::imaging
