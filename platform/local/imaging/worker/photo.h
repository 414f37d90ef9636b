// Photos of every format: tells the format and hands on to its decoder.
#pragma once

#include "platform/local/imaging/worker/input.h"
#include "platform/local/imaging/worker/picture.h"

namespace local::imaging {

Info inspectPhoto(const FileInput& input);
Picture photoPicture(const FileInput& input, const Target& target);

} // namespace local::imaging
