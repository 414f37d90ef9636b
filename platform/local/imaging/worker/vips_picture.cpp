#include "platform/local/imaging/worker/vips_picture.h"

#include "platform/local/imaging/worker/exif.h"
#include "platform/local/imaging/worker/vips_source.h"

#include <memory>
#include <string>

#include <vips/vips.h>

namespace local::imaging {

namespace {

using Image = std::unique_ptr<VipsImage, Unref>;

Image openHeader(const VipsInput& source) {
    Image image(
        vips_image_new_from_source(source.get(), "", "access", VIPS_ACCESS_SEQUENTIAL, nullptr));
    vips_error_clear();
    if (!image || vips_image_get_width(image.get()) <= 0 || vips_image_get_height(image.get()) <= 0)
        throw Failure{Outcome::notAPicture};
    return image;
}

Size displayedSize(VipsImage* image) {
    const Size stored{static_cast<std::uint32_t>(vips_image_get_width(image)),
                      static_cast<std::uint32_t>(vips_image_get_height(image))};
    return oriented(stored, vips_image_get_orientation(image));
}

ExifFacts exifOf(VipsImage* image) {
    const void* bytes = nullptr;
    std::size_t size = 0;
    if (!vips_image_get_typeof(image, VIPS_META_EXIF_NAME) ||
        vips_image_get_blob(image, VIPS_META_EXIF_NAME, &bytes, &size) != 0)
        return {};
    return readExif({static_cast<const std::uint8_t*>(bytes), size});
}

// Desktop screenshot programs sign their PNGs.
bool isSignedByScreenshotProgram(VipsImage* image) {
    const auto visit = [](VipsImage*, const char* name, GValue* value, void*) -> void* {
        if (!g_str_has_prefix(name, "png-comment-") || !g_str_has_suffix(name, "Software") ||
            G_VALUE_TYPE(value) != VIPS_TYPE_REF_STRING)
            return nullptr;
        const std::string text = vips_value_get_ref_string(value, nullptr);
        const bool signedByOne = text == "gnome-screenshot" || text == "mate-screenshot" ||
                                 text == "spectacle" || text == "flameshot";
        return signedByOne ? const_cast<char*>(name) : nullptr;
    };
    return vips_image_map(image, visit, nullptr) != nullptr;
}

// Runs one operation on the image and replaces it by the result.
template <class Operation, class... Arguments>
void apply(Image& image, Operation operation, Arguments... arguments) {
    VipsImage* result = nullptr;
    const int failed = operation(image.get(), &result, arguments..., nullptr);
    vips_error_clear();
    if (failed)
        throw Failure{Outcome::damaged};
    image.reset(result);
}

void makeRgb(Image& image) {
    if (vips_image_hasalpha(image.get())) {
        const std::unique_ptr<VipsArrayDouble, void (*)(void*)> white(
            reinterpret_cast<VipsArrayDouble*>(vips_array_double_newv(3, 255.0, 255.0, 255.0)),
            [](void* area) { vips_area_unref(VIPS_AREA(area)); });
        apply(image, vips_flatten, "background", white.get());
    }
    if (vips_image_get_interpretation(image.get()) != VIPS_INTERPRETATION_sRGB)
        apply(image, vips_colourspace, VIPS_INTERPRETATION_sRGB);
    if (vips_image_get_format(image.get()) != VIPS_FORMAT_UCHAR)
        apply(image, vips_cast_uchar);
    if (vips_image_get_bands(image.get()) != 3)
        throw Failure{Outcome::damaged};
}

// How to convert to sRGB. Pictures without a profile are taken for sRGB already, or for the usual
// idea of CMYK. Grey ones have no profile to fall back on and need none.
struct ColourPlan {
    const char* from = nullptr;
    const char* to = nullptr;
};

ColourPlan colourPlan(VipsImage* header) {
    const bool stated = vips_image_get_typeof(header, VIPS_META_ICC_NAME) != 0;
    switch (vips_image_get_interpretation(header)) {
    case VIPS_INTERPRETATION_CMYK:
        return {"cmyk", "srgb"};
    case VIPS_INTERPRETATION_B_W:
    case VIPS_INTERPRETATION_GREY16:
        return {nullptr, stated ? "srgb" : nullptr};
    default:
        return {"srgb", "srgb"};
    }
}

bool isHeif(FileFormat format) {
    return format == FileFormat::heic || format == FileFormat::heif || format == FileFormat::avif;
}

// The preview in a HEIF file where it shows the whole view with enough pixels, else the picture.
Image openEnough(const VipsInput& source, Size wanted, FileFormat format) {
    Image image = openHeader(source);
    if (!isHeif(format))
        return image;
    Image preview(vips_image_new_from_source(source.get(), "", "access", VIPS_ACCESS_SEQUENTIAL,
                                             "thumbnail", TRUE, nullptr));
    vips_error_clear();
    if (!preview)
        return image;
    const Size whole = displayedSize(image.get());
    const Size small = displayedSize(preview.get());
    const double aspects =
        double(small.width) * whole.height / (double(small.height) * whole.width);
    const bool enough = small.width >= wanted.width && small.height >= wanted.height &&
                        aspects > 0.98 && aspects < 1.02;
    return enough ? std::move(preview) : std::move(image);
}

// Whether libvips has something better than averaging: a decoder that shrinks, smaller versions
// in the file.
bool shrinksByItself(VipsImage* header, FileFormat format) {
    return format == FileFormat::webp || format == FileFormat::jpeg ||
           (format == FileFormat::tiff &&
            (vips_image_get_n_pages(header) > 1 || vips_image_get_n_subifds(header) > 0));
}

// Averages the picture down to at least twice the size. libvips's own filters, which do the rest
// better, take their time over a whole picture when its vector code is off. Left alone where
// there is an alpha channel to be weighed.
void average(Image& image, Size wanted) {
    const Size full = displayedSize(image.get());
    const double reduction =
        std::min(double(full.width) / wanted.width, double(full.height) / wanted.height);
    const int factor = static_cast<int>(reduction / 2);
    if (factor > 1 && !vips_image_hasalpha(image.get()))
        apply(image, vips_shrink, double(factor), double(factor));
}

// Null when it cannot be done.
Image thumbnail(const VipsInput& source, Size size, const ColourPlan& colours, FileFormat format) {
    VipsImage* result = nullptr;
    const auto width = static_cast<int>(size.width);
    const auto height = static_cast<int>(size.height);
    Image image = openEnough(source, size, format);
    if (shrinksByItself(image.get(), format)) {
        image.reset();
        vips_thumbnail_source(source.get(), &result, width, "height", height, "size",
                              VIPS_SIZE_FORCE, "import_profile", colours.from, "export_profile",
                              colours.to, nullptr);
    } else {
        average(image, size);
        vips_thumbnail_image(image.get(), &result, width, "height", height, "size", VIPS_SIZE_FORCE,
                             "import_profile", colours.from, "export_profile", colours.to, nullptr);
    }
    vips_error_clear();
    return Image(result);
}

std::vector<std::uint8_t> pixelsOf(const Image& image) {
    std::size_t size = 0;
    const std::unique_ptr<void, void (*)(void*)> bytes(
        vips_image_write_to_memory(image.get(), &size), g_free);
    vips_error_clear();
    if (!bytes)
        throw Failure{Outcome::damaged};
    const auto* first = static_cast<const std::uint8_t*>(bytes.get());
    return {first, first + size};
}

} // namespace

Info inspectWithVips(const FileInput& input, FileFormat format) {
    const VipsInput source(input);
    const Image image = openHeader(source);
    const ExifFacts exif = exifOf(image.get());
    Info info;
    info.displayed = displayedSize(image.get());
    info.captured = exif.captured;
    info.format = format;
    info.animated = (format == FileFormat::gif || format == FileFormat::webp) &&
                    vips_image_get_n_pages(image.get()) > 1;
    info.screenshot = exif.screenshot || isSignedByScreenshotProgram(image.get());
    info.selfie = exif.selfie;
    return info;
}

Picture pictureWithVips(const FileInput& input, const Target& target, FileFormat format) {
    constexpr std::uint64_t kMostPixels = 512'000'000; // some seconds of decoding
    const VipsInput source(input);
    Picture picture;
    Image header = openHeader(source);
    picture.source = displayedSize(header.get());
    if (std::uint64_t{picture.source.width} * picture.source.height > kMostPixels)
        throw Failure{Outcome::tooLarge};
    const Size wanted = outputSize(picture.source, target);
    const ColourPlan colours = colourPlan(header.get());
    header.reset();

    Image image = thumbnail(source, wanted, colours, format);
    // A profile that is for another kind of picture.
    if (!image && !colours.from && colours.to)
        image = thumbnail(source, wanted, {}, format);
    if (!image)
        throw Failure{Outcome::damaged};
    makeRgb(image);
    picture.size = {static_cast<std::uint32_t>(vips_image_get_width(image.get())),
                    static_cast<std::uint32_t>(vips_image_get_height(image.get()))};
    picture.rgb = pixelsOf(image);
    return picture;
}

} // namespace local::imaging
