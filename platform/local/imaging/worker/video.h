// Videos, by libav: what their header tells, and one key frame as their picture.
#pragma once

#include "platform/local/imaging/worker/input.h"
#include "platform/local/imaging/worker/picture.h"

namespace local::imaging {

Info inspectVideo(const FileInput& input);
Picture videoPicture(const FileInput& input, const Target& target);

} // namespace local::imaging
