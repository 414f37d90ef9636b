#include "platform/local/imaging/worker/tiff.h"

#include "platform/local/imaging/worker/exif.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include <tiffio.h>

namespace local::imaging {

namespace {

struct Stream {
    const Input* input;
    std::uint64_t position = 0;
};

Stream& streamOf(thandle_t handle) {
    return *static_cast<Stream*>(handle);
}

tmsize_t readStream(thandle_t handle, void* to, tmsize_t length) {
    Stream& stream = streamOf(handle);
    const auto got = stream.input->readAt(stream.position, to, static_cast<std::size_t>(length));
    stream.position += got;
    return static_cast<tmsize_t>(got);
}

tmsize_t refuseToWrite(thandle_t, void*, tmsize_t) {
    return -1;
}

toff_t seekStream(thandle_t handle, toff_t offset, int whence) {
    Stream& stream = streamOf(handle);
    const std::uint64_t base = whence == SEEK_CUR   ? stream.position
                               : whence == SEEK_END ? stream.input->size()
                                                    : 0;
    return stream.position = base + offset;
}

int closeStream(thandle_t) {
    return 0;
}
toff_t sizeOfStream(thandle_t handle) {
    return streamOf(handle).input->size();
}
int refuseToMap(thandle_t, void**, toff_t*) {
    return 0;
}
void forgetMap(thandle_t, void*, toff_t) {}

// Photometric interpretations of a sensor's data.
constexpr std::uint16_t kColourFilterArray = 32803;
constexpr std::uint16_t kLinearRaw = 34892;

bool showsSensorData(TIFF* tiff) {
    std::uint16_t photometric = 0;
    return TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric) != 0 &&
           (photometric == kColourFilterArray || photometric == kLinearRaw);
}

std::string textOf(TIFF* tiff, std::uint32_t tag) {
    const char* text = nullptr;
    return TIFFGetField(tiff, tag, &text) != 0 && text ? text : "";
}

FileFormat formatOfMaker(std::string_view maker) {
    struct Maker {
        std::string_view prefix;
        FileFormat format;
    };
    constexpr std::array kMakers{
        Maker{"NIKON", FileFormat::nikonRaw}, Maker{"SONY", FileFormat::sonyRaw},
        Maker{"FUJIFILM", FileFormat::fujiRaw}, Maker{"OLYMPUS", FileFormat::olympusRaw},
        Maker{"Panasonic", FileFormat::panasonicRaw}};
    for (const Maker& known : kMakers)
        if (maker.substr(0, known.prefix.size()) == known.prefix)
            return known.format;
    return FileFormat::otherRaw;
}

bool anySubdirectoryShowsSensorData(TIFF* tiff) {
    std::array<toff_t, 8> copy{};
    std::uint16_t count = 0;
    toff_t* offsets = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_SUBIFD, &count, &offsets) == 0)
        return false;
    // The array belongs to the directory that the first move leaves.
    const auto* end = std::copy_n(offsets, std::min<std::size_t>(count, copy.size()), copy.begin());
    return std::any_of(copy.cbegin(), end, [tiff](toff_t offset) {
        return TIFFSetSubDirectory(tiff, offset) != 0 && showsSensorData(tiff);
    });
}

FileFormat rawFormat(TIFF* tiff) {
    const std::uint8_t* version = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_DNGVERSION, &version) != 0)
        return FileFormat::dng;
    const std::string maker = textOf(tiff, TIFFTAG_MAKE);
    if (showsSensorData(tiff) || anySubdirectoryShowsSensorData(tiff))
        return formatOfMaker(maker);
    return FileFormat::unknown;
}

// Leaves the main directory.
std::optional<CaptureTime> capturedOf(TIFF* tiff) {
    const std::string changed = textOf(tiff, TIFFTAG_DATETIME);
    toff_t exif = 0;
    if (TIFFGetField(tiff, TIFFTAG_EXIFIFD, &exif) != 0 && TIFFReadEXIFDirectory(tiff, exif) != 0) {
        if (auto time = captureTime(textOf(tiff, EXIFTAG_DATETIMEORIGINAL),
                                    textOf(tiff, EXIFTAG_OFFSETTIMEORIGINAL),
                                    textOf(tiff, EXIFTAG_SUBSECTIMEORIGINAL)))
            return time;
        if (auto time = captureTime(textOf(tiff, EXIFTAG_DATETIMEDIGITIZED),
                                    textOf(tiff, EXIFTAG_OFFSETTIMEDIGITIZED),
                                    textOf(tiff, EXIFTAG_SUBSECTIMEDIGITIZED)))
            return time;
        return captureTime(changed, textOf(tiff, EXIFTAG_OFFSETTIME),
                           textOf(tiff, EXIFTAG_SUBSECTIME));
    }
    return captureTime(changed, {}, {});
}

} // namespace

TiffFacts readTiff(const Input& input) {
    TIFFSetErrorHandler(nullptr);
    TIFFSetWarningHandler(nullptr);
    Stream stream{&input};
    // "h": only the header at first; "m": nothing mapped.
    const std::unique_ptr<TIFF, decltype(&TIFFClose)> tiff(
        TIFFClientOpen("photo", "rhm", &stream, readStream, refuseToWrite, seekStream, closeStream,
                       sizeOfStream, refuseToMap, forgetMap),
        &TIFFClose);
    if (!tiff || TIFFSetDirectory(tiff.get(), 0) == 0)
        return {};
    TiffFacts facts;
    facts.captured = capturedOf(tiff.get());
    if (TIFFSetDirectory(tiff.get(), 0) != 0)
        facts.raw = rawFormat(tiff.get());
    return facts;
}

} // namespace local::imaging
