// The host's check of what a worker sent. Pure: bytes in, checked values out, or nothing.
#pragma once

#include "platform/local/imaging/imaging.h"
#include "platform/local/imaging/wire/cover_size.h"
#include "platform/local/imaging/wire/protocol.h"

#include <cstddef>

namespace local::imaging {

struct CheckedPicture {
    Size size; // both sides and their product within the caps
    std::uint64_t sourcePixels = 0;
};

struct CheckedAnswer {
    Outcome outcome = Outcome::notAPicture;
    std::uint32_t residentKiB = 0;
    std::variant<std::monostate, MediaInfo, CheckedPicture> result; // set when outcome is done
};

// Nothing when the bytes do not say the size of a picture within the caps.
std::optional<Size> checkPictureSize(const std::byte* bytes, std::size_t size);

// Nothing when the bytes are not an answer that this task can have.
std::optional<CheckedAnswer> checkAnswer(const std::byte* bytes, std::size_t size, Task asked);

// A sentence for people about an outcome other than done.
std::string sentenceFor(Outcome outcome);

} // namespace local::imaging
