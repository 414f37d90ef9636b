// Which kind of still a file is, told from its first bytes.
#pragma once

#include "platform/local/imaging/wire/protocol.h"
#include "platform/local/imaging/worker/input.h"

namespace local::imaging {

// `unknown` for what no decoder of stills here reads. TIFF-based RAW files come out as tiff; see
// tiff.h.
FileFormat sniffPhoto(const Input& input);

} // namespace local::imaging
