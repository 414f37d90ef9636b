// What the tests of the imaging process share: pictures made on the spot, and asking for them.
#pragma once

#include "platform/local/imaging/imaging.h"
#include "tests/support/files.h"
#include "tests/support/home.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <string>

namespace imaging_test {

namespace fs = std::filesystem;
using Colour = std::array<int, 3>;

using Folder = support::ScratchHome;
using support::readBytes;
using support::writeText;

// Runs a shell command in the folder; a failure is the test's.
void run(const Folder& folder, const std::string& command);

local::Pixels flat(std::uint32_t width, std::uint32_t height, Colour colour);
// Red, green, blue and white quarters, from the top left in reading order.
local::Pixels quarters(std::uint32_t width, std::uint32_t height);
void writeJpeg(const fs::path& path, const local::Pixels& pixels, int quality = 95);

// A PNG of one bit a pixel, all black, in a few kilobytes however large it says it is.
std::string blackPng(std::uint32_t width, std::uint32_t height);
// A raw sensor file (DNG) bright above and dark below, quarter turned to the right, taken at
// `date`. On its corner: the rows are diagonals of the picture. Pixels may be wider than high.
std::string rawDng(std::uint32_t width, std::uint32_t height, const std::string& date,
                   bool onItsCorner = false, std::uint32_t pixelWidth = 1);

local::UniqueFd open(const fs::path& path);
std::variant<local::MediaInfo, local::ImagingFailure>
inspect(const fs::path& path, local::MediaKind kind = local::MediaKind::photo);
local::MediaInfo infoOf(const fs::path& path, local::MediaKind kind = local::MediaKind::photo);
std::string failureOf(const fs::path& path, local::MediaKind kind = local::MediaKind::photo);

local::PictureSource sourceOf(const fs::path& path,
                              local::MediaKind kind = local::MediaKind::photo);
std::optional<local::Pixels> cover(const fs::path& path, double width, double height,
                                   local::MediaKind kind = local::MediaKind::photo);
std::string sizeOf(const std::optional<local::Pixels>& pixels); // "256x384", or "none"

// The mean colour around a place given in parts of the picture's sides.
Colour colourAt(const local::Pixels& pixels, double x, double y);
testing::AssertionResult isNear(Colour actual, Colour expected, int tolerance);

} // namespace imaging_test
