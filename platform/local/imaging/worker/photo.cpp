#include "platform/local/imaging/worker/photo.h"

#include "platform/local/imaging/worker/jpeg_picture.h"
#include "platform/local/imaging/worker/raw_picture.h"
#include "platform/local/imaging/worker/sniff.h"
#include "platform/local/imaging/worker/tiff.h"
#include "platform/local/imaging/worker/vips_picture.h"

namespace local::imaging {

namespace {

bool isRaw(FileFormat format) {
    return format >= FileFormat::dng && format <= FileFormat::otherRaw;
}

} // namespace

Info inspectPhoto(const FileInput& input) {
    const FileFormat format = sniffPhoto(input);
    if (format == FileFormat::unknown)
        throw Failure{Outcome::notAPicture};
    if (format == FileFormat::jpeg)
        return inspectJpeg(input);
    if (isRaw(format))
        return inspectRaw(input, format, readTiff(input).captured);
    if (format != FileFormat::tiff)
        return inspectWithVips(input, format);
    const TiffFacts facts = readTiff(input);
    if (isRaw(facts.raw))
        return inspectRaw(input, facts.raw, facts.captured);
    Info info = inspectWithVips(input, format);
    info.captured = facts.captured;
    return info;
}

Picture photoPicture(const FileInput& input, const Target& target) {
    const FileFormat format = sniffPhoto(input);
    if (format == FileFormat::unknown)
        throw Failure{Outcome::notAPicture};
    if (format == FileFormat::jpeg)
        if (auto picture = jpegPicture(input, target))
            return std::move(*picture);
    if (isRaw(format) || (format == FileFormat::tiff && isRaw(readTiff(input).raw)))
        return rawPicture(input, target);
    return pictureWithVips(input, target, format);
}

} // namespace local::imaging
