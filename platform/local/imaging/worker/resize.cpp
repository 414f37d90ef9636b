#include "platform/local/imaging/worker/resize.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace local::imaging {

namespace {
constexpr int kWeightBits = 14;
constexpr int kExtraBits = 6; // of the rows between the two passes; 255 << 6 fits 16 bits
} // namespace

RowResizer::Axis RowResizer::makeAxis(std::uint32_t from, std::uint32_t to) {
    const double scale = double(from) / to;
    const double radius = std::max(scale, 1.0);
    Axis axis;
    axis.taps = std::min(from, static_cast<std::uint32_t>(std::ceil(radius * 2)) + 1);
    axis.first.resize(to);
    axis.weights.resize(std::size_t{to} * axis.taps);
    std::vector<double> exact(axis.taps);
    for (std::uint32_t i = 0; i < to; ++i) {
        const double centre = (i + 0.5) * scale;
        const double low = std::floor(centre - radius);
        axis.first[i] = static_cast<std::uint32_t>(std::clamp(low, 0.0, double(from - axis.taps)));
        double total = 0;
        for (std::uint32_t tap = 0; tap < axis.taps; ++tap) {
            exact[tap] = std::max(0.0, 1 - std::abs(axis.first[i] + tap + 0.5 - centre) / radius);
            total += exact[tap];
        }
        // What rounding loses goes to the largest weight, so that a flat picture stays as it is.
        auto* weights = &axis.weights[std::size_t{i} * axis.taps];
        int left = 1 << kWeightBits;
        for (std::uint32_t tap = 0; tap < axis.taps; ++tap) {
            weights[tap] =
                static_cast<std::int16_t>(std::floor(exact[tap] / total * (1 << kWeightBits)));
            left -= weights[tap];
        }
        auto* largest = std::max_element(weights, weights + axis.taps);
        *largest = static_cast<std::int16_t>(*largest + left);
    }
    return axis;
}

RowResizer::RowResizer(Size from, Size to, std::uint8_t* destination)
    : from_(from), to_(to), destination_(destination) {
    if (from == to)
        return;
    across_ = makeAxis(from.width, to.width);
    down_ = makeAxis(from.height, to.height);
    ring_.resize(std::size_t{down_.taps} * to.width * 3);
    sum_.resize(std::size_t{to.width} * 3);
}

void RowResizer::push(const std::uint8_t* row) {
    if (from_ == to_) {
        std::memcpy(destination_ + std::size_t{pushed_++} * to_.width * 3, row,
                    std::size_t{to_.width} * 3);
        return;
    }
    reduceAcross(row, &ring_[std::size_t{pushed_ % down_.taps} * to_.width * 3]);
    ++pushed_;
    while (written_ < to_.height && down_.first[written_] + down_.taps <= pushed_)
        writeRow(written_++);
}

void RowResizer::reduceAcross(const std::uint8_t* row, std::int16_t* out) const {
    constexpr int kShift = kWeightBits - kExtraBits;
    constexpr int kHalf = 1 << (kShift - 1);
    const std::int16_t* weight = across_.weights.data();
    for (std::uint32_t x = 0; x < to_.width; ++x) {
        const std::uint8_t* in = row + std::size_t{across_.first[x]} * 3;
        int red = kHalf;
        int green = kHalf;
        int blue = kHalf;
        for (std::uint32_t tap = 0; tap < across_.taps; ++tap, ++weight, in += 3) {
            red += *weight * in[0];
            green += *weight * in[1];
            blue += *weight * in[2];
        }
        *out++ = static_cast<std::int16_t>(red >> kShift);
        *out++ = static_cast<std::int16_t>(green >> kShift);
        *out++ = static_cast<std::int16_t>(blue >> kShift);
    }
}

void RowResizer::writeRow(std::uint32_t y) {
    constexpr int kShift = kWeightBits + kExtraBits;
    const std::size_t count = sum_.size();
    std::fill(sum_.begin(), sum_.end(), 1 << (kShift - 1));
    for (std::uint32_t tap = 0; tap < down_.taps; ++tap) {
        const int weight = down_.weights[std::size_t{y} * down_.taps + tap];
        if (weight == 0)
            continue;
        const std::int16_t* in = &ring_[std::size_t{(down_.first[y] + tap) % down_.taps} * count];
        std::int32_t* sum = sum_.data();
        for (std::size_t i = 0; i < count; ++i)
            sum[i] += weight * in[i];
    }
    std::uint8_t* out = destination_ + std::size_t{y} * count;
    for (std::size_t i = 0; i < count; ++i)
        out[i] = static_cast<std::uint8_t>(std::clamp(sum_[i] >> kShift, 0, 255));
}

} // namespace local::imaging
