// One small file of each kind that the decoders read, compiled in from tool/samples/.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tool {

struct Sample {
    std::string ending; // of its name
    std::span<const std::uint8_t> bytes;
};

std::vector<Sample> samples();

} // namespace tool
