// What the stand-in for a worker that was taken over tells about its attempts.
#pragma once

#include <cstdint>

namespace compromised {

enum class Tried : std::uint32_t { refused = 1001, allowed = 1002 };

} // namespace compromised
