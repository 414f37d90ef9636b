// The host's check of what a worker sent. Pure: bytes in, checked values out, or nothing.
#pragma once

#include "platform/local/imaging/imaging.h"
#include "platform/local/imaging/protocol.h"

#include <cstddef>

namespace local::imaging {

struct CheckedPicture {
    std::uint32_t width = 0; // both sides and their product within the caps
    std::uint32_t height = 0;
    std::uint64_t sourcePixels = 0;
};

struct CheckedAnswer {
    Outcome outcome = Outcome::notAPicture;
    std::uint32_t residentKiB = 0;
    std::variant<std::monostate, MediaInfo, CheckedPicture> result; // set when outcome is done
};

// Nothing when the bytes are not an answer that this task can have.
std::optional<CheckedAnswer> checkAnswer(const std::byte* bytes, std::size_t size, Task asked);

// A sentence for people about an outcome other than done.
std::string sentenceFor(Outcome outcome);

} // namespace local::imaging
