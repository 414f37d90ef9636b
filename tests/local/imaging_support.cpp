#include "imaging_support.h"

#include <cstdlib>

#include <fcntl.h>

namespace imaging_test {

void run(const Folder& folder, const std::string& command) {
    const std::string line = "cd '" + folder.path().string() + "' && (" + command + ") >log 2>&1";
    // NOLINTNEXTLINE(bugprone-command-processor): the tests' own commands
    ASSERT_EQ(std::system(line.c_str()), 0) << command << "\n" << readBytes(folder / "log");
}

local::Pixels painted(int width, int height, const std::function<Colour(int x, int y)>& colourAt) {
    local::Pixels pixels{static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), {}};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (const int part : colourAt(x, y))
                pixels.rgb.push_back(static_cast<std::uint8_t>(part));
    return pixels;
}

local::Pixels flat(int width, int height, Colour colour) {
    return painted(width, height, [=](int, int) { return colour; });
}

local::Pixels quarters(int width, int height) {
    return painted(width, height, [=](int x, int y) {
        if (y < height / 2)
            return x < width / 2 ? kRed : kGreen;
        return x < width / 2 ? kBlue : kWhite;
    });
}

void writeJpeg(const fs::path& path, const local::Pixels& pixels, int quality) {
    const auto jpeg = local::encodeJpeg(pixels, quality);
    ASSERT_TRUE(jpeg);
    writeText(path, std::string(jpeg->begin(), jpeg->end()));
}

void writeRaw(const Folder& folder, const std::string& name, const std::string& size,
              const std::string& tags) {
    // The program that writes the tags has to be told of one that it only reads.
    writeText(folder / "tags", "%Image::ExifTool::UserDefined = ('Image::ExifTool::Exif::Main' => "
                               "{0xc617 => {Name => 'CFALayout', Writable => 'int16u', "
                               "WriteGroup => 'IFD0'}});");
    run(folder,
        "vips grey across.v " + size +
            " && vips rot across.v up.v d270 && vips linear up.v sensor.v 3000 600 &&"
            " vips cast sensor.v sensor.tif ushort && exiftool -config tags -q -n"
            " -IFD0:SubfileType=0 -PhotometricInterpretation=32803 -Make=Maker -Model=Model"
            " -Orientation=6 -ModifyDate='2024:05:06 07:08:09' -CFARepeatPatternDim='2 2'"
            " -IFD0:CFAPattern2='0 1 1 2' -DNGVersion='1 4 0 0' -UniqueCameraModel='Maker Model'"
            " -IFD0:WhiteLevel=4095 -ColorMatrix1='1 0 0 0 1 0 0 0 1' " +
            tags + " sensor.tif -o " + name);
}

local::UniqueFd open(const fs::path& path) {
    return local::UniqueFd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
}

std::variant<local::MediaInfo, local::ImagingFailure> inspect(const fs::path& path,
                                                              local::MediaKind kind) {
    const local::UniqueFd file(::open(path.c_str(), O_RDWR | O_CLOEXEC)); // no worker gets it so
    const off_t place = lseek(file.get(), 7, SEEK_SET);
    auto told = local::Inspection(file.get(), kind).finish();
    EXPECT_EQ(lseek(file.get(), 0, SEEK_CUR), place) << "it is the caller's";
    return told;
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

std::optional<local::Pixels> cover(const fs::path& path, double width, double height,
                                   local::MediaKind kind) {
    return local::coverPicture({kind, "", [=] { return open(path); }, {}}, width, height);
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
            return testing::AssertionFailure() << testing::PrintToString(actual) << " is not "
                                               << testing::PrintToString(expected);
    return testing::AssertionSuccess();
}

} // namespace imaging_test
