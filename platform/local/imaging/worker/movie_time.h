// The times in the boxes of a QuickTime or MP4 file.
#pragma once

#include "platform/local/imaging/worker/input.h"

namespace local::imaging {

// Whether the movie or one of its tracks says that it was made on the last day of 1969, as those do
// whose clock stood at its start somewhere east of Greenwich. The demuxer takes what lies before
// 1970 for seconds since then, which is right for some devices; of that day it makes one of 2036.
bool saysEndOf1969(const Input& input);

} // namespace local::imaging
