// What makes something of strangers' bytes: FUZZED names the one of these functions that is tried.
#include "bridge/json_text.h"
#include "bridge/utf8.h"
#include "platform/local/change/capture_date.h"
#include "platform/local/imaging/answer.h"
#include "platform/local/imaging/worker/exif.h"
#include "platform/local/imaging/worker/jpeg_picture.h"
#include "platform/local/imaging/worker/photo.h"
#include "platform/local/imaging/worker/raw_picture.h"
#include "platform/local/imaging/worker/request.h"
#include "platform/local/imaging/worker/tiff.h"
#include "platform/local/imaging/worker/video.h"
#include "platform/local/imaging/worker/vips_picture.h"
#include "platform/local/system/unique_fd.h"

#include <nlohmann/json.hpp>

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

void check(Size size) {
    require(size.width > 0 && size.width <= kMaxSide);
    require(size.height > 0 && size.height <= kMaxSide);
    require(std::uint64_t{size.width} * size.height <= kMaxPixels);
}

// What decoders answer must be what the host accepts.
void check(const Info& info) {
    require(info.displayed.width > 0 && info.displayed.height > 0);
    require(info.format <= kLastFormat);
}

void check(const Picture& picture) {
    check(picture.size);
    require(picture.rgb.size() == std::size_t{picture.size.width} * picture.size.height * 3);
}

// The imaging process's check of what it is asked.
[[maybe_unused]] void request(const std::uint8_t* data, std::size_t size) {
    const auto asked = checkRequest(reinterpret_cast<const std::byte*>(data), size);
    require(!asked || asked->task <= kLastTask);
    if (!asked || !makesPicture(asked->task))
        return;
    for (const Size source : {Size{1, 1}, Size{kMaxSide, 1}, Size{4000, 3000}})
        check(coverSize(source, asked->targetWidth, asked->targetHeight));
}

// The host's check of what an imaging process answers, and the use an import makes of it.
[[maybe_unused]] void answer(const std::uint8_t* data, std::size_t size) {
    const auto* const bytes = reinterpret_cast<const std::byte*>(data);
    if (const auto said = checkPictureSize(bytes, size))
        check(*said);
    for (const Task asked : {Task::inspectPhoto, Task::inspectVideo, Task::inspectWholeJpeg,
                             Task::photoPicture, Task::videoPicture}) {
        const auto checked = checkAnswer(bytes, size, asked);
        if (!checked)
            continue;
        require((checked->outcome == Outcome::done) == (checked->result.index() != 0));
        require(checked->outcome == Outcome::done || !sentenceFor(checked->outcome).empty());
        if (const auto* picture = std::get_if<CheckedPicture>(&checked->result))
            check(picture->size);
        if (const auto* info = std::get_if<local::MediaInfo>(&checked->result)) {
            require(info->width > 0 && info->height > 0);
            require(info->durationSeconds >= 0 && info->durationSeconds < 1e10);
            if (info->captured)
                local::millisecondsSince1970(*info->captured);
        }
    }
}

// Text on its way to the host: what is valid, and nothing else, is read by a reader that is not
// ours, and as it was.
[[maybe_unused]] void json(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const long long number = static_cast<long long>(size) - 5;
    std::string written = "[";
    appendJsonString(written, text);
    written += ',';
    appendJsonNumber(written, number);
    written += ']';
    const auto read = nlohmann::json::parse(written, nullptr, false);
    require(read.is_discarded() != isValidUtf8(text));
    require(read.is_discarded() || (read[0] == text && read[1] == number));
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
