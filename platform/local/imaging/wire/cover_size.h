// The size of a picture that covers a target.
#pragma once

#include "platform/local/imaging/wire/protocol.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace local::imaging {

struct Size {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool operator==(const Size&) const = default;
};

inline bool isFullSize(double targetWidth, double targetHeight) {
    return targetWidth == -1 && targetHeight == -1;
}

// Whether a picture can be asked for at that size: (-1, -1), or both sides finite and above zero.
inline bool isUsableTarget(double targetWidth, double targetHeight) {
    return isFullSize(targetWidth, targetHeight) ||
           (std::isfinite(targetWidth) && std::isfinite(targetHeight) && targetWidth > 0 &&
            targetHeight > 0);
}

// The smallest size with the source's aspect ratio that covers a usable target, scaled down to
// kMaxPixels and kMaxSide where it would exceed them. `source` has no side of zero.
inline Size coverSize(Size source, double targetWidth, double targetHeight) {
    constexpr double kFarBeyondTheCap = 1e9;
    double scale = 1;
    if (!isFullSize(targetWidth, targetHeight))
        scale = std::max(std::min(targetWidth, kFarBeyondTheCap) / source.width,
                         std::min(targetHeight, kFarBeyondTheCap) / source.height);
    double width = source.width * scale;
    double height = source.height * scale;
    const double shrink = std::min(
        {1.0, kMaxSide / width, kMaxSide / height, std::sqrt(kMaxPixels / (width * height))});
    width *= shrink;
    height *= shrink;
    // Rounding up keeps the target covered; the small allowance keeps 256.0000001 at 256. Under
    // the cap nothing is covered anyway, and rounding down keeps the cap.
    const auto whole = [&](double side) {
        const double rounded = shrink < 1 ? std::floor(side) : std::ceil(side - 1e-6);
        return static_cast<std::uint32_t>(std::clamp(rounded, 1.0, double{kMaxSide}));
    };
    return Size{whole(width), whole(height)};
}

} // namespace local::imaging
