// The directories of TIFF files, to which most camera RAW formats belong.
#pragma once

#include "platform/local/imaging/worker/input.h"
#include "platform/local/imaging/worker/picture.h"

namespace local::imaging {

struct TiffFacts {
    FileFormat raw = FileFormat::unknown; // set for camera RAW
    std::optional<CaptureTime> captured;
};

// Never fails: what cannot be read is not told.
TiffFacts readTiff(const Input& input);

} // namespace local::imaging
