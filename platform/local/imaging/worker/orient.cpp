#include "platform/local/imaging/worker/orient.h"

#include <cstring>

namespace local::imaging {

void writeUpright(const Picture& picture, std::uint8_t* to) {
    const int orientation = picture.orientation;
    if (orientation <= 1 || orientation > 8) {
        std::memcpy(to, picture.rgb.data(), picture.rgb.size());
        return;
    }
    const std::ptrdiff_t width = picture.size.width;
    const std::ptrdiff_t height = picture.size.height;
    // Where the displayed top left pixel lies in the source, and the steps to its neighbours.
    const bool fromRight =
        orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;
    const bool fromBottom =
        orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
    const std::ptrdiff_t stepX = fromRight ? -3 : 3;
    const std::ptrdiff_t stepY = (fromBottom ? -3 : 3) * width;
    const bool swap = swapsSides(orientation);
    const std::ptrdiff_t across = swap ? stepY : stepX;
    const std::ptrdiff_t down = swap ? stepX : stepY;
    const std::uint8_t* corner = picture.rgb.data() + (fromRight ? (width - 1) * 3 : 0) +
                                 (fromBottom ? (height - 1) * width * 3 : 0);
    const Size out = oriented(picture.size, orientation);
    for (std::uint32_t y = 0; y < out.height; ++y) {
        const std::uint8_t* in = corner + down * std::ptrdiff_t{y};
        for (std::uint32_t x = 0; x < out.width; ++x, in += across, to += 3)
            std::memcpy(to, in, 3);
    }
}

} // namespace local::imaging
