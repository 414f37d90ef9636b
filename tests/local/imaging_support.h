// What the tests of the imaging process share: pictures made on the spot, and asking for them.
#pragma once

#include "platform/local/imaging/imaging.h"
#include "tests/support/files.h"
#include "tests/support/home.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <functional>
#include <string>

namespace imaging_test {

namespace fs = std::filesystem;
using Colour = std::array<int, 3>;

using Folder = support::ScratchHome;
using support::readBytes;
using support::writeText;

// Runs a shell command in the folder; a failure is the test's.
void run(const Folder& folder, const std::string& command);

constexpr Colour kRed{255, 0, 0};
constexpr Colour kGreen{0, 255, 0};
constexpr Colour kBlue{0, 0, 255};
constexpr Colour kWhite{255, 255, 255};

local::Pixels painted(int width, int height, const std::function<Colour(int x, int y)>& colourAt);
local::Pixels flat(int width, int height, Colour colour);
// Red, green, blue and white quarters, from the top left in reading order.
local::Pixels quarters(int width, int height);
void writeJpeg(const fs::path& path, const local::Pixels& pixels, int quality = 95);

// A raw sensor file (DNG) bright above and dark below, quarter turned to the right, taken on 6 May
// 2024 at 07:08:09. Its size as it is seen ("480 640"); tags are for exiftool.
void writeRaw(const Folder& folder, const std::string& name, const std::string& size = "480 640",
              const std::string& tags = "");

local::UniqueFd open(const fs::path& path);
std::variant<local::MediaInfo, local::ImagingFailure>
inspect(const fs::path& path, local::MediaKind kind = local::MediaKind::photo);
local::MediaInfo infoOf(const fs::path& path, local::MediaKind kind = local::MediaKind::photo);
std::string failureOf(const fs::path& path, local::MediaKind kind = local::MediaKind::photo);

std::optional<local::Pixels> cover(const fs::path& path, double width, double height,
                                   local::MediaKind kind = local::MediaKind::photo);
std::string sizeOf(const std::optional<local::Pixels>& pixels); // "256x384", or "none"

// The mean colour around a place given in parts of the picture's sides.
Colour colourAt(const local::Pixels& pixels, double x, double y);
testing::AssertionResult isNear(Colour actual, Colour expected, int tolerance);

} // namespace imaging_test
