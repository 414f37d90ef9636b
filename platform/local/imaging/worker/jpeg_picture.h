// JPEG, by libjpeg-turbo directly: scaled while it is decoded, row by row, and of a progressive
// file no more scans than a small picture needs.
#pragma once

#include "platform/local/imaging/worker/input.h"
#include "platform/local/imaging/worker/picture.h"

namespace local::imaging {

Info inspectJpeg(const Input& input);

// Nothing when the file is a JPEG that this decoder leaves to another (CMYK). `orientation`
// stands for the file's own where it is given. What a file holds before it breaks off is a
// picture, unless the target says coveredOnly.
std::optional<Picture> jpegPicture(const Input& input, const Target& target,
                                   std::optional<int> orientation = std::nullopt);

} // namespace local::imaging
