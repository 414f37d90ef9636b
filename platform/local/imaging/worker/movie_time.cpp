#include "platform/local/imaging/worker/movie_time.h"

#include <array>
#include <string_view>

namespace local::imaging {

namespace {

struct Box {
    std::string_view type() const { return {name.data(), name.size()}; }

    std::array<char, 4> name{};
    std::uint64_t contents = 0; // where they begin
    std::uint64_t end = 0;
};

std::uint64_t bigEndian(const std::uint8_t* bytes, int count) {
    std::uint64_t value = 0;
    for (int i = 0; i < count; ++i)
        value = value << 8 | bytes[i];
    return value;
}

// The box at `at`, which ends no later than `end`; false when there is none.
bool readBox(const Input& input, std::uint64_t at, std::uint64_t end, Box& box) {
    std::array<std::uint8_t, 16> head{};
    if (at >= end || end - at < 8 || input.readAt(at, head.data(), head.size()) < 8)
        return false;
    std::uint64_t size = bigEndian(head.data(), 4);
    const bool isLarge = size == 1;
    if (isLarge)
        size = bigEndian(head.data() + 8, 8);
    if (size == 0)
        size = end - at;
    const std::uint64_t headSize = isLarge ? 16 : 8;
    if (size < headSize || size > end - at)
        return false;
    std::memcpy(box.name.data(), head.data() + 4, box.name.size());
    box.contents = at + headSize;
    box.end = at + size;
    return true;
}

bool isEndOf1969(const Input& input, const Box& header) {
    constexpr std::uint64_t kDay = 24 * 60 * 60;
    constexpr std::uint64_t kFrom1904To1970 = 2'082'844'800;
    std::array<std::uint8_t, 12> head{};
    if (header.end - header.contents < head.size() ||
        input.readAt(header.contents, head.data(), head.size()) < head.size())
        return false;
    const bool isLong = head[0] == 1; // the demuxer leaves long ones as they are
    const std::uint64_t created = bigEndian(head.data() + 4, 4);
    return !isLong && created >= kFrom1904To1970 - kDay && created < kFrom1904To1970;
}

bool anyIn(const Input& input, std::uint64_t from, std::uint64_t end, int depth) {
    constexpr int kMostBoxes = 1000; // in one place: a movie has a dozen
    Box box;
    for (int i = 0; i < kMostBoxes && readBox(input, from, end, box); ++i, from = box.end) {
        const bool holdsHeaders = (depth == 0 && box.type() == "moov") ||
                                  (depth == 1 && box.type() == "trak") ||
                                  (depth == 2 && box.type() == "mdia");
        if (holdsHeaders && anyIn(input, box.contents, box.end, depth + 1))
            return true;
        if ((box.type() == "mvhd" || box.type() == "mdhd") && isEndOf1969(input, box))
            return true;
    }
    return false;
}

} // namespace

bool saysEndOf1969(const Input& input) {
    return anyIn(input, 0, input.size(), 0);
}

} // namespace local::imaging
