// Conversion of pixels to sRGB.
#pragma once

#include <cstdint>
#include <span>

namespace local::imaging {

// Converts interleaved 8-bit RGB in place from the ICC profile's colour space. Leaves the pixels
// as they are when the profile is empty, unreadable or for neither RGB nor grey (of grey pictures
// the three channels are equal).
void convertToSrgb(std::span<std::uint8_t> rgb, std::span<const std::uint8_t> profile);

// The same from Adobe RGB (1998), which cameras may state without a profile.
void convertAdobeRgbToSrgb(std::span<std::uint8_t> rgb);

} // namespace local::imaging
