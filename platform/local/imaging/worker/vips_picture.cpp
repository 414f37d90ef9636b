#include "platform/local/imaging/worker/vips_picture.h"

#include "platform/local/imaging/worker/exif.h"
#include "platform/local/imaging/worker/mapping.h"

#include <array>
#include <memory>
#include <new>
#include <string>

#include <dlfcn.h>
#include <gmodule.h>
#include <vips/vips.h>

#include <vips/vector.h> // after vips.h, which it needs

namespace local::imaging {

namespace {

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
};
using Image = std::unique_ptr<VipsImage, Unref>;

// The mapped file, which spares a copy of it; a file too large for that is read with pread (see
// input.h).
class Source {
public:
    explicit Source(const FileInput& input) : input_(input) {
        constexpr std::uint64_t kMostMapped = 1 << 30; // of the 3 GiB that this process has
        if (input.size() <= kMostMapped)
            mapping_.emplace(input);
        if (mapping_ && mapping_->bytes())
            source_.reset(vips_source_new_from_memory(mapping_->bytes(), mapping_->size()));
        else
            source_.reset(readingSource());
        if (!source_)
            throw std::bad_alloc();
    }
    VipsSource* get() const { return source_.get(); }

private:
    VipsSource* readingSource() {
        VipsSourceCustom* custom = vips_source_custom_new();
        g_signal_connect(custom, "read", G_CALLBACK(onRead), this);
        g_signal_connect(custom, "seek", G_CALLBACK(onSeek), this);
        return VIPS_SOURCE(custom);
    }
    static gint64 onRead(VipsSourceCustom*, void* to, gint64 length, void* self) {
        auto& source = *static_cast<Source*>(self);
        const auto got =
            source.input_.readAt(source.position_, to, static_cast<std::size_t>(length));
        source.position_ += got;
        return static_cast<gint64>(got);
    }
    static gint64 onSeek(VipsSourceCustom*, gint64 offset, int whence, void* self) {
        auto& source = *static_cast<Source*>(self);
        const auto base = static_cast<gint64>(whence == SEEK_CUR   ? source.position_
                                              : whence == SEEK_END ? source.input_.size()
                                                                   : 0);
        if (offset > INT64_MAX - base || base + offset < 0)
            return -1;
        source.position_ = static_cast<std::uint64_t>(base + offset);
        return base + offset;
    }

    const Input& input_;
    std::uint64_t position_ = 0;
    std::optional<Mapping> mapping_;
    std::unique_ptr<VipsSource, Unref> source_;
};

Image openHeader(const Source& source) {
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
Image openEnough(const Source& source, Size wanted, FileFormat format) {
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
Image thumbnail(const Source& source, Size size, const ColourPlan& colours, FileFormat format) {
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

// GLib's warnings are about strangers' files and would go to the host's standard error.
GLogWriterOutput dropWarning(GLogLevelFlags, const GLogField*, gsize, void*) {
    return G_LOG_WRITER_HANDLED;
}

void dropMessage(const char*, GLogLevelFlags, const char*, void*) {}

bool loadModule(const std::string& folder, const char* name) {
    GModule* module = g_module_open((folder + name).c_str(), G_MODULE_BIND_LOCAL);
    if (module)
        g_module_make_resident(module);
    return module != nullptr;
}

// Where libvips itself would look for its modules.
std::string moduleFolder() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&vips_init), &info) == 0 || !info.dli_fname)
        return {};
    const std::string library = info.dli_fname;
    return library.substr(0, library.rfind('/') + 1) + "vips-modules-" +
           std::to_string(VIPS_MAJOR_VERSION) + "." + std::to_string(VIPS_MINOR_VERSION) + "/";
}

} // namespace

bool startVips() {
    g_log_set_writer_func(dropWarning, nullptr, nullptr);
    g_log_set_default_handler(dropMessage, nullptr);
    if (vips_init("photos-kit-imaging") != 0)
        return false;
    const std::string folder = moduleFolder();
    loadModule(folder, "vips-heif.so");
    loadModule(folder, "vips-jxl.so");
    vips_operation_block_set("VipsForeignLoad", TRUE);
    for (const char* loader : {"VipsForeignLoadPng", "VipsForeignLoadWebp", "VipsForeignLoadTiff",
                               "VipsForeignLoadNsgif", "VipsForeignLoadHeif", "VipsForeignLoadJxl",
                               "VipsForeignLoadJpeg"})
        vips_operation_block_set(loader, FALSE);
    // Its vector code is compiled while running, which the sandbox does not let happen.
    vips_vector_set_enabled(FALSE);
    // Results of one request are nothing to the next, which may be a stranger's.
    vips_cache_set_max(0);
    return true;
}

Info inspectWithVips(const FileInput& input, FileFormat format) {
    const Source source(input);
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
    const Source source(input);
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
