#include "platform/local/imaging/answer.h"

#include "platform/local/imaging/wire/capture_time.h"

#include <array>
#include <cmath>
#include <cstring>

namespace local::imaging {

namespace {

constexpr std::array<const char*, static_cast<std::size_t>(kLastFormat) + 1> kContentTypes{
    "",
    "public.jpeg",
    "public.png",
    "com.compuserve.gif",
    "org.webmproject.webp",
    "public.tiff",
    "public.heic",
    "public.heif",
    "public.avif",
    "public.jpeg-xl",
    "com.adobe.raw-image",
    "com.canon.cr2-raw-image",
    "com.canon.cr3-raw-image",
    "com.nikon.raw-image",
    "com.sony.arw-raw-image",
    "com.fuji.raw-image",
    "com.olympus.raw-image",
    "com.panasonic.rw2-raw-image",
    "public.camera-raw-image",
    "com.apple.quicktime-movie",
    "public.mpeg-4",
    "com.apple.m4v-video",
    "public.3gpp",
    "public.3gpp2",
    "org.matroska.mkv",
    "org.webmproject.webm",
    "public.avi",
    "public.mpeg-2-transport-stream",
    "public.mpeg",
    "com.microsoft.windows-media-wmv",
    "com.adobe.flash.video",
    "org.xiph.ogg",
};

std::optional<CaptureTime> captureTimeOf(const Answer& answer) {
    if (!(answer.flags & kHasCaptureTime))
        return std::nullopt;
    CaptureTime time{answer.year,   answer.month,  answer.day,        answer.hour,
                     answer.minute, answer.second, answer.millisecond};
    if (answer.flags & kHasOffset)
        time.offsetMinutes = answer.offsetMinutes;
    return existing(time);
}

MediaInfo mediaInfoOf(const Answer& answer) {
    constexpr double kLongest = 1e9; // a damaged header may claim anything
    MediaInfo info;
    info.width = answer.width;
    info.height = answer.height;
    info.captured = captureTimeOf(answer);
    info.contentType = kContentTypes[static_cast<std::size_t>(answer.format)];
    info.animated = answer.flags & kAnimated;
    info.raw = answer.flags & kRaw;
    info.screenshot = answer.flags & kScreenshot;
    info.selfie = answer.flags & kSelfie;
    if (answer.durationSeconds > 0 && answer.durationSeconds < kLongest)
        info.durationSeconds = answer.durationSeconds;
    return info;
}

bool isWithinCaps(Size size) {
    return size.width > 0 && size.height > 0 && size.width <= kMaxSide && size.height <= kMaxSide &&
           std::uint64_t{size.width} * size.height <= kMaxPixels;
}

} // namespace

std::optional<Size> checkPictureSize(const std::byte* bytes, std::size_t size) {
    PictureSize said;
    if (size != sizeof said)
        return std::nullopt;
    std::memcpy(&said, bytes, sizeof said);
    const Size picture{said.width, said.height};
    if (said.mark != kPictureMark || !isWithinCaps(picture))
        return std::nullopt;
    return picture;
}

std::optional<CheckedAnswer> checkAnswer(const std::byte* bytes, std::size_t size, Task asked) {
    Answer answer;
    if (size != sizeof answer)
        return std::nullopt;
    std::memcpy(&answer, bytes, sizeof answer);
    if (answer.mark != kAnswerMark || answer.outcome > kLastOutcome || answer.format > kLastFormat)
        return std::nullopt;

    CheckedAnswer checked{answer.outcome, answer.residentKiB, {}};
    if (answer.outcome != Outcome::done)
        return checked;
    if (answer.width == 0 || answer.height == 0)
        return std::nullopt;
    if (!makesPicture(asked)) {
        checked.result = mediaInfoOf(answer);
        return checked;
    }
    const Size picture{answer.width, answer.height};
    if (!isWithinCaps(picture))
        return std::nullopt;
    checked.result =
        CheckedPicture{picture, std::uint64_t{answer.sourceWidth} * answer.sourceHeight};
    return checked;
}

std::string sentenceFor(Outcome outcome) {
    switch (outcome) {
    case Outcome::notAVideo:
        return "The file is not a video that can be read.";
    case Outcome::noVideoTrack:
        return "The file holds no video.";
    case Outcome::tooLarge:
        return "The picture is too large to be read.";
    case Outcome::damaged:
    case Outcome::notCovered:
        return "The picture is damaged.";
    case Outcome::done:
    case Outcome::notAPicture:
        break;
    }
    return "The file is not a picture that can be read.";
}

} // namespace local::imaging
