// What passes between the host and photos-kit-imaging over a SOCK_SEQPACKET pair.
//
// The worker says Hello once its sandbox is up. Then, for each request: the host sends one
// Request with the file as its only SCM_RIGHTS descriptor; the worker sends one Answer. Before the
// Answer to a request for a picture that it has made, it says the picture's size, and the host
// sends kRoomMark with a memfd of exactly the size of the pixels, which never grows and which the
// host empties when it has read them. A worker sends no descriptors. Both ends come from one build,
// so the structs travel as they lie in memory; still neither end believes the other: answer.h is
// the host's check, request.h the worker's.
#pragma once

#include <cstdint>
#include <type_traits>

namespace local::imaging {

// Sanitizers slow everything down, reserve terabytes of addresses and want to write reports, so
// the bounds that would stop them are wider under them. So does an emulator of processors.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(PHOTOS_KIT_EMULATED)
inline constexpr bool kInstrumented = true;
#else
inline constexpr bool kInstrumented = false;
#endif

inline constexpr std::uint32_t kRequestMark = 0x504b5131;
inline constexpr std::uint32_t kAnswerMark = 0x504b4131;
inline constexpr std::uint32_t kHelloMark = 0x504b4831;
inline constexpr std::uint32_t kPictureMark = 0x504b5031;
inline constexpr std::uint32_t kRoomMark = 0x504b4d31;

// A picture has at most this many pixels (a 108 megapixel camera's, 324 MB of RGB) and, because a
// JPEG can hold no more, this many to a side.
inline constexpr std::uint64_t kMaxPixels = 108'000'000;
inline constexpr std::uint32_t kMaxSide = 65'500;

enum class Task : std::uint32_t {
    inspectPhoto,
    inspectVideo,
    inspectWholeJpeg, // as inspectPhoto; a JPEG must also decode to its last byte
    photoPicture,
    videoPicture,
};
inline constexpr auto kLastTask = Task::videoPicture;

constexpr bool makesPicture(Task task) {
    return task == Task::photoPicture || task == Task::videoPicture;
}

enum RequestFlag : std::uint32_t {
    kCoveredOnly = 1, // fail rather than enlarge, and rather than show a damaged picture
};

enum class FileFormat : std::uint32_t {
    unknown,
    jpeg,
    png,
    gif,
    webp,
    tiff,
    heic,
    heif,
    avif,
    jpegXl,
    dng,
    canonCr2,
    canonCr3,
    nikonRaw,
    sonyRaw,
    fujiRaw,
    olympusRaw,
    panasonicRaw,
    otherRaw,
    quickTime,
    mpeg4,
    appleMpeg4,
    threeGpp,
    threeGpp2,
    matroska,
    webm,
    avi,
    mpegTransport,
    mpegProgram,
    windowsMedia,
    flashVideo,
    ogg,
};
inline constexpr auto kLastFormat = FileFormat::ogg;

enum class Outcome : std::uint32_t {
    done,
    notAPicture,  // no decoder knows the bytes, or its header cannot be read
    notAVideo,    // no demuxer knows the bytes
    noVideoTrack, // it opens but holds no moving picture
    damaged,      // the header reads, the picture does not
    tooLarge,     // more memory than this process may have
    notCovered,   // kCoveredOnly, and the picture is too small
};
inline constexpr auto kLastOutcome = Outcome::notCovered;

enum AnswerFlag : std::uint32_t {
    kAnimated = 1,
    kRaw = 2,
    kScreenshot = 4,
    kSelfie = 8,
    kHasCaptureTime = 16,
    kHasOffset = 32,
};

struct Request {
    std::uint32_t mark;
    Task task;
    std::uint32_t flags;
    std::uint32_t reserved;
    double targetWidth; // pictures only: (-1, -1), or both above zero
    double targetHeight;
};

struct PictureSize {
    std::uint32_t mark;
    std::uint32_t width;
    std::uint32_t height;
};

struct Answer {
    std::uint32_t mark;
    Outcome outcome;
    std::uint32_t width; // inspection: as displayed; picture: what was said before
    std::uint32_t height;
    std::uint32_t sourceWidth; // pictures: the file's own size as displayed
    std::uint32_t sourceHeight;
    std::uint32_t residentKiB; // memory of the worker after the request; all ones: it is worn out
    FileFormat format;
    std::uint32_t flags;
    std::int32_t year, month, day, hour, minute, second, millisecond;
    std::int32_t offsetMinutes;
    double durationSeconds;
};

static_assert(std::is_trivially_copyable_v<Request> && std::is_trivially_copyable_v<Answer>);
static_assert(sizeof(Request) == 32 && sizeof(PictureSize) == 12 && sizeof(Answer) == 80);

} // namespace local::imaging
