// Values that the decoders of the imaging process share.
#pragma once

#include "platform/local/imaging/wire/cover_size.h"
#include "platform/local/imaging/wire/media.h"
#include "platform/local/imaging/wire/protocol.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace local::imaging {

// Thrown by decoders, answered by the loop in main.cpp.
struct Failure {
    Outcome outcome;
};

// What is asked for: a usable target, see isUsableTarget.
struct Target {
    double width = 0;
    double height = 0;
    bool coveredOnly = false;
};

// 8-bit sRGB, rows from the top without padding, still to be turned by `orientation` (the EXIF
// value, 1 to 8).
struct Picture {
    Size size;
    std::vector<std::uint8_t> rgb;
    int orientation = 1;
    Size source; // the file's own size as displayed
};

struct Info {
    Size displayed;
    std::optional<CaptureTime> captured;
    FileFormat format = FileFormat::unknown;
    bool animated = false;
    bool raw = false;
    bool screenshot = false;
    bool selfie = false;
    double durationSeconds = 0;
};

inline bool swapsSides(int orientation) {
    return orientation >= 5 && orientation <= 8;
}

inline Size oriented(Size size, int orientation) {
    return swapsSides(orientation) ? Size{size.height, size.width} : size;
}

// The size to make of a source that is displayed at `source`.
inline Size outputSize(Size source, const Target& target) {
    const Size size = coverSize(source, target.width, target.height);
    const bool covers = isFullSize(target.width, target.height) ||
                        (size.width >= target.width && size.height >= target.height);
    if (target.coveredOnly && (!covers || size.width > source.width || size.height > source.height))
        throw Failure{Outcome::notCovered};
    return size;
}

} // namespace local::imaging
