#include "imaging_support.h"

#include <algorithm>
#include <cstdlib>

#include <fcntl.h>
#include <zlib.h>

namespace imaging_test {

void run(const Folder& folder, const std::string& command) {
    const std::string line = "cd '" + folder.path().string() + "' && (" + command + ") >log 2>&1";
    // NOLINTNEXTLINE(bugprone-command-processor): the tests' own commands
    ASSERT_EQ(std::system(line.c_str()), 0) << command << "\n" << readBytes(folder / "log");
}

local::Pixels flat(std::uint32_t width, std::uint32_t height, Colour colour) {
    local::Pixels pixels{width, height, {}};
    for (std::size_t i = 0; i < std::size_t{width} * height * 3; ++i)
        pixels.rgb.push_back(static_cast<std::uint8_t>(colour[i % 3]));
    return pixels;
}

local::Pixels quarters(std::uint32_t width, std::uint32_t height) {
    constexpr std::uint8_t kColours[4][3] = {
        {255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 255}};
    local::Pixels pixels{width, height, {}};
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x) {
            const auto& colour = kColours[(y >= height / 2 ? 2 : 0) + (x >= width / 2 ? 1 : 0)];
            pixels.rgb.insert(pixels.rgb.end(), colour, colour + 3);
        }
    return pixels;
}

void writeJpeg(const fs::path& path, const local::Pixels& pixels, int quality) {
    const auto jpeg = local::encodeJpeg(pixels, quality);
    ASSERT_TRUE(jpeg);
    writeText(path, std::string(jpeg->begin(), jpeg->end()));
}

namespace {

std::string number(std::uint64_t value, int bytes, bool bigEndian) {
    std::string text;
    for (int i = 0; i < bytes; ++i)
        text += static_cast<char>(value >> 8 * (bigEndian ? bytes - 1 - i : i));
    return text;
}

std::string chunk(const std::string& type, const std::string& data) {
    const std::string body = type + data;
    const auto crc =
        crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size()));
    return number(data.size(), 4, true) + body + number(crc, 4, true);
}

std::string deflatedZeros(std::uint64_t count) {
    static std::array<Bytef, 1 << 16> zeros{};
    std::array<char, 1 << 16> room{};
    std::string out;
    z_stream stream{};
    deflateInit(&stream, 1);
    while (count > 0 || stream.avail_in > 0 || stream.avail_out == 0) {
        if (stream.avail_in == 0) {
            stream.next_in = zeros.data();
            stream.avail_in = static_cast<uInt>(std::min<std::uint64_t>(count, zeros.size()));
            count -= stream.avail_in;
        }
        stream.next_out = reinterpret_cast<Bytef*>(room.data());
        stream.avail_out = static_cast<uInt>(room.size());
        deflate(&stream, count > 0 ? Z_NO_FLUSH : Z_FINISH);
        out.append(room.data(), room.size() - stream.avail_out);
    }
    deflateEnd(&stream);
    return out;
}

} // namespace

std::string blackPng(std::uint32_t width, std::uint32_t height) {
    return "\x89PNG\r\n\x1a\n" +
           chunk("IHDR", number(width, 4, true) + number(height, 4, true) +
                             std::string("\x01\0\0\0\0", 5)) +
           chunk("IDAT", deflatedZeros((std::uint64_t{width} + 7) / 8 * height + height)) +
           chunk("IEND", "");
}

std::string rawDng(std::uint32_t width, std::uint32_t height, const std::string& date,
                   bool onItsCorner, std::uint32_t pixelWidth) {
    struct Tag {
        int id, type;
        std::uint32_t count;
        std::string data;
    };
    const auto shorts = [](std::initializer_list<int> values) {
        std::string text;
        for (const int value : values)
            text += number(static_cast<std::uint64_t>(value), 2, false);
        return text;
    };
    const auto longs = [](std::uint64_t value) { return number(value, 4, false); };
    const std::string matrix = [&] {
        std::string text;
        for (int i = 0; i < 9; ++i)
            text += longs(i % 4 == 0 ? 1 : 0) + longs(1);
        return text;
    }();
    const std::uint32_t pixelBytes = width * height * 2;
    const std::vector<Tag> tags{
        {254, 4, 1, longs(0)},
        {256, 4, 1, longs(width)},
        {257, 4, 1, longs(height)},
        {258, 3, 1, shorts({16, 0})},
        {259, 3, 1, shorts({1, 0})},
        {262, 3, 1, shorts({32803, 0})},
        {271, 2, 6, std::string("Maker\0", 6)},
        {272, 2, 6, std::string("Model\0", 6)},
        {273, 4, 1, longs(8)},
        {274, 3, 1, shorts({6, 0})},
        {277, 3, 1, shorts({1, 0})},
        {278, 4, 1, longs(height)},
        {279, 4, 1, longs(pixelBytes)},
        {306, 2, 20, date + '\0'},
        {33421, 3, 2, shorts({2, 2})},
        {33422, 1, 4, std::string("\0\1\1\2", 4)},
        {50706, 1, 4, std::string("\1\4\0\0", 4)},
        {50708, 2, 12, std::string("Maker Model\0", 12)},
        {50711, 3, 1, shorts({onItsCorner ? 2 : 1, 0})},
        {50717, 4, 1, longs(4095)},
        {50718, 5, 2, longs(pixelWidth) + longs(1) + longs(1) + longs(1)},
        {50721, 10, 9, matrix},
    };
    std::string file = std::string("II\x2a\0", 4) + longs(8 + pixelBytes);
    for (std::uint32_t i = 0; i < width * height; ++i)
        file += number(i < width * height / 2 ? 3000 : 600, 2, false);
    std::string entries = number(tags.size(), 2, false);
    std::string values;
    const std::size_t valuesAt = file.size() + 2 + tags.size() * 12 + 4;
    for (const Tag& tag : tags) {
        entries += shorts({tag.id, tag.type}) + longs(tag.count);
        const bool fits = tag.data.size() <= 4;
        entries += fits ? tag.data : longs(valuesAt + values.size());
        if (!fits)
            values += tag.data;
    }
    return file + entries + longs(0) + values;
}

local::UniqueFd open(const fs::path& path) {
    return local::UniqueFd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
}

std::variant<local::MediaInfo, local::ImagingFailure> inspect(const fs::path& path,
                                                              local::MediaKind kind) {
    const local::UniqueFd file = open(path);
    return local::Inspection(file.get(), kind).finish();
}

local::MediaInfo infoOf(const fs::path& path, local::MediaKind kind) {
    const auto result = inspect(path, kind);
    if (const auto* failure = std::get_if<local::ImagingFailure>(&result)) {
        ADD_FAILURE() << path << ": " << failure->sentence;
        return {};
    }
    return std::get<local::MediaInfo>(result);
}

std::string failureOf(const fs::path& path, local::MediaKind kind) {
    const auto result = inspect(path, kind);
    const auto* failure = std::get_if<local::ImagingFailure>(&result);
    return failure ? failure->sentence : "";
}

local::PictureSource sourceOf(const fs::path& path, local::MediaKind kind) {
    return {kind, "", [path] { return open(path); }, {}};
}

std::optional<local::Pixels> cover(const fs::path& path, double width, double height,
                                   local::MediaKind kind) {
    return local::coverPicture(sourceOf(path, kind), width, height);
}

std::string sizeOf(const std::optional<local::Pixels>& pixels) {
    return pixels ? std::to_string(pixels->width) + "x" + std::to_string(pixels->height) : "none";
}

Colour colourAt(const local::Pixels& pixels, double x, double y) {
    const auto left = static_cast<std::size_t>(x * (pixels.width - 4));
    const auto top = static_cast<std::size_t>(y * (pixels.height - 4));
    Colour sum{};
    for (std::size_t row = top; row < top + 4; ++row)
        for (std::size_t column = left; column < left + 4; ++column)
            for (std::size_t c = 0; c < 3; ++c)
                sum[c] += pixels.rgb[(row * pixels.width + column) * 3 + c];
    return {(sum[0] + 8) / 16, (sum[1] + 8) / 16, (sum[2] + 8) / 16};
}

testing::AssertionResult isNear(Colour actual, Colour expected, int tolerance) {
    for (std::size_t i = 0; i < 3; ++i)
        if (std::abs(actual[i] - expected[i]) > tolerance)
            return testing::AssertionFailure()
                   << actual[0] << "," << actual[1] << "," << actual[2] << " is not " << expected[0]
                   << "," << expected[1] << "," << expected[2];
    return testing::AssertionSuccess();
}

} // namespace imaging_test
