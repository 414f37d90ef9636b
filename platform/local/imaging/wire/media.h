// What the host and the imaging process speak of: kinds of media, what a header tells, pixels.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace local {

enum class MediaKind { photo, video };

// A reading of the calendar as the file states it: not yet a point in time.
struct CaptureTime {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    int millisecond = 0;
    std::optional<int> offsetMinutes; // east of UTC; nothing: the file does not say
};

// What the header of a file tells.
struct MediaInfo {
    std::uint32_t width = 0; // pixels as displayed, orientation applied; above zero
    std::uint32_t height = 0;
    std::optional<CaptureTime> captured; // nothing: no date, or one that does not exist
    std::string contentType;    // uniform type identifier told from the bytes; may be empty
    bool animated = false;      // more than one frame to be shown in time
    bool raw = false;           // camera RAW
    bool screenshot = false;    // the metadata says so
    bool selfie = false;        // the metadata says so (a front camera's lens)
    double durationSeconds = 0; // videos
};

// sRGB, 8 bits a channel, rows from the top, no padding: rgb.size() == width * height * 3.
struct Pixels {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> rgb;
};

} // namespace local
