// A file in memory for decoders that want a descriptor.
#pragma once

#include "platform/local/imaging/worker/picture.h"
#include "platform/local/system/unique_fd.h"

#include <cstddef>
#include <cstdint>
#include <exception>

namespace fuzz {

local::UniqueFd memoryFile(const std::uint8_t* bytes, std::size_t size);

// Sizes that decoders answer must be what the host accepts; aborts when they are not.
void check(const local::imaging::Info& info);
void check(const local::imaging::Picture& picture);

// Refusing is right, whatever is thrown.
template <class Work>
void tried(Work work) {
    try {
        work();
    } catch (const local::imaging::Failure&) {
    } catch (const std::exception&) {
    }
}

} // namespace fuzz
