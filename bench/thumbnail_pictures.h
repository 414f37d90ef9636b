// The pictures of the thumbnail workloads: one photograph at the sizes and in the formats wanted.
#pragma once

#include "bench/bench.h"

namespace bench {

// Makes "name" (whose ending tells the format) at that size unless it is there. Ends this program
// when it cannot.
std::filesystem::path photograph(const Settings& settings, const std::string& name, int width,
                                 int height);

// Ten seconds of H.264 at 1920x1080.
std::filesystem::path video(const Settings& settings);

} // namespace bench
