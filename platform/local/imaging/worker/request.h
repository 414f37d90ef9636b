// The worker's check of what the host sent. Pure: bytes in, a checked value out, or nothing.
#pragma once

#include "platform/local/imaging/wire/cover_size.h"
#include "platform/local/imaging/wire/protocol.h"

#include <cstddef>
#include <cstring>
#include <optional>

namespace local::imaging {

inline std::optional<Request> checkRequest(const std::byte* bytes, std::size_t size) {
    Request request;
    if (size != sizeof request)
        return std::nullopt;
    std::memcpy(&request, bytes, sizeof request);
    if (request.mark != kRequestMark || request.task > kLastTask ||
        (request.flags & ~std::uint32_t{kCoveredOnly}) != 0)
        return std::nullopt;
    if (makesPicture(request.task) && !isUsableTarget(request.targetWidth, request.targetHeight))
        return std::nullopt;
    return request;
}

} // namespace local::imaging
