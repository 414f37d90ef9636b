// What the imaging process makes of files: FUZZED names the one of these functions that is tried.
#include "platform/local/imaging/worker/exif.h"
#include "platform/local/imaging/worker/jpeg_picture.h"
#include "platform/local/imaging/worker/photo.h"
#include "platform/local/imaging/worker/raw_picture.h"
#include "platform/local/imaging/worker/tiff.h"
#include "platform/local/imaging/worker/video.h"
#include "platform/local/imaging/worker/vips_picture.h"
#include "platform/local/system/unique_fd.h"

#include <cstdlib>
#include <exception>
#include <string_view>

#include <sys/mman.h>
#include <unistd.h>

using namespace local::imaging;

namespace {

void require(bool condition) {
    if (!condition)
        std::abort();
}

// Sizes that decoders answer must be what the host accepts.
void check(const Info& info) {
    require(info.displayed.width > 0 && info.displayed.height > 0);
    require(info.format <= kLastFormat);
}

void check(const Picture& picture) {
    require(picture.size.width > 0 && picture.size.width <= kMaxSide);
    require(picture.size.height > 0 && picture.size.height <= kMaxSide);
    require(std::uint64_t{picture.size.width} * picture.size.height <= kMaxPixels);
    require(picture.rgb.size() == std::size_t{picture.size.width} * picture.size.height * 3);
}

// Refusing is right, whatever is thrown.
template <class Work>
void tried(Work work) {
    try {
        work();
    } catch (const Failure&) {
    } catch (const std::exception&) {
    }
}

// A photo's metadata: the EXIF block, its texts, a TIFF's directories.
[[maybe_unused]] void exif(const std::uint8_t* data, std::size_t size) {
    readExif({data, size});
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto first = text.find('\n');
    const auto second = first == std::string_view::npos ? first : text.find('\n', first + 1);
    if (second != std::string_view::npos)
        captureTime(text.substr(0, first), text.substr(first + 1, second - first - 1),
                    text.substr(second + 1));
    isFrontLens(text);
    tried([&] { readTiff(MemoryInput(data, size)); });
}

// JPEG by our own use of libjpeg-turbo: scaled, whole, and refusing what is damaged.
[[maybe_unused]] void jpeg(const std::uint8_t* data, std::size_t size) {
    const MemoryInput input(data, size);
    tried([&] {
        check(inspectJpeg(input)); // else decoding would stop at the same header
        for (const Target& target : {Target{64, 48}, Target{-1, -1, true}})
            tried([&] {
                if (const auto picture = jpegPicture(input, target))
                    check(*picture);
            });
    });
}

// The other decoders want a descriptor.
template <class Inspect, class Decode>
void inMemoryFile(const std::uint8_t* data, std::size_t size, Inspect inspect, Decode decode) {
    const local::UniqueFd file(memfd_create("input", MFD_CLOEXEC));
    require(file && write(file.get(), data, size) == static_cast<ssize_t>(size));
    const FileInput input(file.get());
    tried([&] { check(inspect(input)); });
    tried([&] { check(decode(input, Target{64, 48})); });
}

// Camera RAW, whatever the first bytes say.
[[maybe_unused]] void raw(const std::uint8_t* data, std::size_t size) {
    const auto inspect = [](const FileInput& input) {
        return inspectRaw(input, FileFormat::otherRaw, readTiff(input).captured);
    };
    inMemoryFile(data, size, inspect, rawPicture);
}

// Told by their first bytes, JPEG and RAW included.
[[maybe_unused]] void stills(const std::uint8_t* data, std::size_t size) {
    static const bool started = startVips();
    require(started);
    inMemoryFile(data, size, inspectPhoto, photoPicture);
}

// The header, and one key frame.
[[maybe_unused]] void video(const std::uint8_t* data, std::size_t size) {
    inMemoryFile(data, size, inspectVideo, videoPicture);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FUZZED(data, size);
    return 0;
}
