#include "platform/local/imaging/worker/jpeg_picture.h"

#include "platform/local/imaging/worker/colour.h"
#include "platform/local/imaging/worker/exif.h"
#include "platform/local/imaging/worker/jpeg_decoder.h"
#include "platform/local/imaging/worker/resize.h"

#include <array>
#include <memory>

namespace local::imaging {

namespace {

constexpr std::array<char, 6> kExifPrefix{'E', 'x', 'i', 'f', 0, 0};

// The largest reduction whose result still has every pixel that the output needs.
unsigned denominatorFor(Size full, Size needed) {
    for (const unsigned denominator : {8U, 4U, 2U})
        if ((full.width + denominator - 1) / denominator >= needed.width &&
            (full.height + denominator - 1) / denominator >= needed.height)
            return denominator;
    return 1;
}

void convertColours(Picture& picture, JpegDecoder& decoder, const ExifFacts& exif) {
    std::vector<std::uint8_t> profile;
    if (decoder.readProfile(profile))
        convertToSrgb(picture.rgb, profile);
    else if (exif.adobeRgb)
        convertAdobeRgbToSrgb(picture.rgb);
}

} // namespace

Info inspectJpeg(const Input& input) {
    const auto decoder = std::make_unique<JpegDecoder>(input);
    if (!decoder->readHeader())
        throw Failure{Outcome::notAPicture};
    const ExifFacts exif = readExif(decoder->segment(1, kExifPrefix));
    Info info;
    info.displayed = oriented(decoder->size(), exif.orientation);
    info.captured = exif.captured;
    info.format = FileFormat::jpeg;
    info.screenshot = exif.screenshot;
    info.selfie = exif.selfie;
    return info;
}

std::optional<Picture> jpegPicture(const Input& input, const Target& target,
                                   std::optional<int> orientation) {
    const auto decoder = std::make_unique<JpegDecoder>(input);
    if (!decoder->readHeader())
        throw Failure{Outcome::notAPicture};
    if (!decoder->isSupported())
        return std::nullopt;
    const ExifFacts exif = readExif(decoder->segment(1, kExifPrefix));
    Picture picture;
    picture.orientation = orientation.value_or(exif.orientation);
    picture.source = oriented(decoder->size(), picture.orientation);
    picture.size = oriented(outputSize(picture.source, target), picture.orientation);

    if (!decoder->start(denominatorFor(decoder->size(), picture.size)))
        throw Failure{Outcome::damaged};
    const Size decoded = decoder->outputSize();
    picture.rgb.resize(std::size_t{picture.size.width} * picture.size.height * 3);
    RowResizer resizer(decoded, picture.size, picture.rgb.data());
    std::vector<std::uint8_t> row(std::size_t{decoded.width} * 3);
    if (!decoder->pushRows(resizer, row.data()))
        throw Failure{Outcome::damaged};
    if (target.coveredOnly && decoder->sawDamage())
        throw Failure{Outcome::damaged};
    convertColours(picture, *decoder, exif);
    return picture;
}

} // namespace local::imaging
