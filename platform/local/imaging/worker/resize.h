// Resizing of interleaved 8-bit RGB, row by row, so that a large source never lies in memory.
#pragma once

#include "platform/local/imaging/wire/cover_size.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace local::imaging {

// A triangle filter as wide as the reduction (bilinear when enlarging). Push every row of the
// source from the top; afterwards the destination is complete.
class RowResizer {
public:
    // `destination` has room for to.width * to.height * 3 bytes and outlives the resizer.
    RowResizer(Size from, Size to, std::uint8_t* destination);

    void push(const std::uint8_t* row);

private:
    struct Axis {
        std::vector<std::uint32_t> first;  // per output position: the first input position
        std::vector<std::int16_t> weights; // `taps` of them for each, adding up to 1 << 14
        std::uint32_t taps = 0;
    };
    static Axis makeAxis(std::uint32_t from, std::uint32_t to);
    void reduceAcross(const std::uint8_t* row, std::int16_t* out) const;
    void writeRow(std::uint32_t y);

    Size from_;
    Size to_;
    std::uint8_t* destination_;
    Axis across_;
    Axis down_;
    std::vector<std::int16_t> ring_; // the last down_.taps rows, reduced across, 6 bits finer
    std::vector<std::int32_t> sum_;
    std::uint32_t pushed_ = 0;
    std::uint32_t written_ = 0;
};

} // namespace local::imaging
