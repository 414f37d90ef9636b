#include "platform/local/imaging/worker/raw_picture.h"

#include "platform/local/imaging/wire/capture_time.h"
#include "platform/local/imaging/worker/jpeg_picture.h"
#include "platform/local/imaging/worker/mapping.h"
#include "platform/local/imaging/worker/resize.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <memory>
#include <string_view>

#include <libraw/libraw.h>

namespace local::imaging {

namespace {

struct OpenRaw {
    Mapping mapping;
    std::unique_ptr<LibRaw> raw = std::make_unique<LibRaw>(LIBRAW_OPIONS_NO_DATAERR_CALLBACK);

    explicit OpenRaw(const FileInput& input) : mapping(input) {
        if (!mapping.bytes() ||
            raw->open_buffer(mapping.bytes(), mapping.size()) != LIBRAW_SUCCESS ||
            raw->imgdata.sizes.width == 0 || raw->imgdata.sizes.height == 0)
            throw Failure{Outcome::notAPicture};
    }
    // Of what comes out of developing, not turned yet: a sensor that stands on its corner, as some
    // of Fuji's do, is set upright, and pixels are made square.
    Size stored() const {
        const auto& sizes = raw->imgdata.sizes;
        double width = sizes.width;
        double height = sizes.height;
        if (const int corner = raw->is_fuji_rotated(); corner > 1) {
            width = std::floor((corner - 1) / std::sqrt(0.5));
            height = std::floor((height - (corner - 1)) / std::sqrt(0.5));
        }
        if (sizes.pixel_aspect > 0 && sizes.pixel_aspect < 1)
            height = std::floor(height / sizes.pixel_aspect + 0.5);
        if (sizes.pixel_aspect > 1)
            width = std::floor(width * sizes.pixel_aspect + 0.5);
        const auto side = [](double length) {
            return static_cast<std::uint32_t>(std::clamp(length, 1.0, 65'535.0));
        };
        return {side(width), side(height)};
    }
    // The EXIF value for LibRaw's: 3 half a turn, 5 a quarter to the left, 6 to the right.
    int orientation() const {
        const int flip = raw->imgdata.sizes.flip;
        return flip == 3 ? 3 : flip == 5 ? 8 : flip == 6 ? 6 : 1;
    }
};

// LibRaw makes a point in time of the date with mktime; this process lives in UTC.
std::optional<CaptureTime> timestampOf(const LibRaw& raw) {
    const std::time_t stamp = raw.imgdata.other.timestamp;
    std::tm parts{};
    if (stamp <= 0 || !gmtime_r(&stamp, &parts))
        return std::nullopt;
    return existing({parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour,
                     parts.tm_min, parts.tm_sec});
}

// The embedded JPEG, where it shows the same view with enough pixels.
std::optional<Picture> fromPreview(OpenRaw& open, const Target& target) {
    if (open.raw->unpack_thumb() != LIBRAW_SUCCESS ||
        open.raw->imgdata.thumbnail.tformat != LIBRAW_THUMBNAIL_JPEG)
        return std::nullopt;
    const auto& preview = open.raw->imgdata.thumbnail;
    const MemoryInput jpeg(preview.thumb, preview.tlength);
    Target covered = target;
    covered.coveredOnly = true;
    try {
        const Size shown = oriented(inspectJpeg(jpeg).displayed, 1);
        const Size full = open.stored();
        const double difference =
            double(shown.width) * full.height / (double(shown.height) * full.width);
        // A preview turned already, or cropped, is not the picture at the size that was listed.
        if (std::abs(difference - 1) > 0.02)
            return std::nullopt;
        if (isFullSize(target.width, target.height) && shown.width < full.width)
            return std::nullopt;
        auto picture = jpegPicture(jpeg, covered, open.orientation());
        if (picture)
            picture->source = oriented(full, open.orientation());
        return picture;
    } catch (const Failure&) {
        return std::nullopt;
    }
}

// In megabytes. LibRaw 0.21 moved the setting.
template <class Data>
void boundMemory(Data& data) {
    constexpr unsigned most = 2048;
    if constexpr (requires { data.rawparams.max_raw_memory_mb; })
        data.rawparams.max_raw_memory_mb = most;
    else
        data.params.max_raw_memory_mb = most;
}

Picture develop(OpenRaw& open, const Target& target) {
    Picture picture;
    picture.orientation = open.orientation();
    picture.source = oriented(open.stored(), picture.orientation);
    picture.size = oriented(outputSize(picture.source, target), picture.orientation);

    auto& raw = *open.raw;
    auto& settings = raw.imgdata.params;
    settings.half_size = picture.size.width <= open.stored().width / 2 &&
                         picture.size.height <= open.stored().height / 2;
    settings.use_camera_wb = 1;
    settings.output_color = 1; // sRGB
    settings.output_bps = 8;
    settings.user_qual = 0; // bilinear
    settings.user_flip = 0; // turned by us
    boundMemory(raw.imgdata);
    if (raw.unpack() != LIBRAW_SUCCESS || raw.dcraw_process() != LIBRAW_SUCCESS)
        throw Failure{Outcome::damaged};
    int status = LIBRAW_SUCCESS;
    const std::unique_ptr<libraw_processed_image_t, void (*)(libraw_processed_image_t*)> image(
        raw.dcraw_make_mem_image(&status), LibRaw::dcraw_clear_mem);
    if (!image || image->type != LIBRAW_IMAGE_BITMAP || image->bits != 8 || image->width == 0 ||
        image->height == 0 || (image->colors != 3 && image->colors != 1))
        throw Failure{Outcome::damaged};

    picture.rgb.resize(std::size_t{picture.size.width} * picture.size.height * 3);
    RowResizer resizer({image->width, image->height}, picture.size, picture.rgb.data());
    std::vector<std::uint8_t> row(std::size_t{image->width} * 3);
    for (std::uint32_t y = 0; y < image->height; ++y) {
        const std::uint8_t* in = image->data + std::size_t{y} * image->width * image->colors;
        for (std::size_t i = 0; i < row.size(); ++i)
            row[i] = image->colors == 3 ? in[i] : in[i / 3];
        resizer.push(row.data());
    }
    return picture;
}

} // namespace

Info inspectRaw(const FileInput& input, FileFormat format, std::optional<CaptureTime> captured) {
    const OpenRaw open(input);
    Info info;
    info.displayed = oriented(open.stored(), open.orientation());
    info.captured = captured ? captured : timestampOf(*open.raw);
    info.format = format;
    info.raw = true;
    return info;
}

Picture rawPicture(const FileInput& input, const Target& target) {
    OpenRaw open(input);
    if (auto picture = fromPreview(open, target))
        return std::move(*picture);
    return develop(open, target);
}

} // namespace local::imaging
