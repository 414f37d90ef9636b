// Stills other than JPEG and RAW, by libvips.
#pragma once

#include "platform/local/imaging/worker/input.h"
#include "platform/local/imaging/worker/picture.h"

namespace local::imaging {

// Loads libvips and the modules for HEIF and JPEG XL, and blocks every loader but those of the
// formats that sniff.h names. Once, before the sandbox. False when libvips does not start.
bool startVips();

Info inspectWithVips(const FileInput& input, FileFormat format);
Picture pictureWithVips(const FileInput& input, const Target& target, FileFormat format);

} // namespace local::imaging
