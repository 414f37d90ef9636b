#include "bench/thumbnail_pictures.h"

#include <cstdio>
#include <cstdlib>

#include <vips/vips.h>

namespace bench {

namespace {

constexpr const char* original = "/usr/share/backgrounds/mate/abstract/Elephants_5640x3172.jpg";

[[noreturn]] void giveUp(const std::string& what) {
    std::printf("photos_bench: %s could not be made: %s\n", what.c_str(), vips_error_buffer());
    std::exit(3);
}

int save(VipsImage* image, const std::string& path) {
    const std::string type = path.substr(path.rfind('.'));
    const bool progressive = path.find("progressive") != std::string::npos;
    if (type == ".jpg")
        return vips_jpegsave(image, path.c_str(), "Q", 90, "interlace", progressive ? 1 : 0,
                             nullptr);
    // The encoders' slow defaults would take minutes; decoding costs about the same.
    if (type == ".heic")
        return vips_heifsave(image, path.c_str(), "effort", 0, nullptr);
    if (type == ".avif")
        return vips_heifsave(image, path.c_str(), "compression", VIPS_FOREIGN_HEIF_COMPRESSION_AV1,
                             "effort", 0, nullptr);
    if (type == ".jxl")
        return vips_jxlsave(image, path.c_str(), "effort", 3, nullptr);
    return vips_image_write_to_file(image, path.c_str(), nullptr);
}

} // namespace

std::filesystem::path photograph(const Settings& settings, const std::string& name, int width,
                                 int height) {
    const auto folder = settings.folder / "pictures";
    auto path = folder / name;
    if (std::filesystem::exists(path))
        return path;
    std::filesystem::create_directories(folder);
    if (vips_init("photos_bench") != 0)
        giveUp(name);
    VipsImage* image = nullptr;
    if (vips_thumbnail(original, &image, width, "height", height, "size", VIPS_SIZE_FORCE,
                       nullptr) != 0)
        giveUp(name);
    const auto part = folder / ("part-" + name);
    if (save(image, part.string()) != 0)
        giveUp(name);
    g_object_unref(image);
    std::filesystem::rename(part, path);
    return path;
}

std::filesystem::path video(const Settings& settings) {
    auto path = settings.folder / "pictures" / "video.mp4";
    if (std::filesystem::exists(path))
        return path;
    std::filesystem::create_directories(path.parent_path());
    const std::string command =
        "ffmpeg -v error -y -f lavfi -i testsrc2=size=1920x1080:rate=30:duration=10 -pix_fmt "
        "yuv420p -c:v libx264 -preset veryfast '" +
        path.string() + "' >/dev/null 2>&1";
    if (std::system(command.c_str()) != 0) // NOLINT(bugprone-command-processor)
        giveUp("the video");
    return path;
}

} // namespace bench
