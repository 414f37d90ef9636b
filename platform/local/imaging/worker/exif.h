// What a photo's EXIF block tells.
#pragma once

#include "platform/local/imaging/worker/picture.h"

#include <span>
#include <string_view>

namespace local::imaging {

struct ExifFacts {
    int orientation = 1;
    std::optional<CaptureTime> captured;
    bool adobeRgb = false; // stated by the interoperability index
    bool screenshot = false;
    bool selfie = false;
};

// `block` may start with "Exif\0\0", as it does in a JPEG. Never fails: what cannot be read is not
// told.
ExifFacts readExif(std::span<const std::uint8_t> block);

// From EXIF's texts: "2024:05:06 07:08:09", "+02:00" and "123" (a fraction of a second). Nothing
// when the date does not exist.
std::optional<CaptureTime> captureTime(std::string_view date, std::string_view offset,
                                       std::string_view fraction);

// A lens that names itself a front camera's.
bool isFrontLens(std::string_view lensModel);

} // namespace local::imaging
