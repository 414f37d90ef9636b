// Thumbnails: the imaging process and the host's encoding, against decoders in this process.
//
// "First" means that no derivative is kept. A cell of 256 pixels is covered throughout.
#include "bench/bench.h"
#include "bench/thumbnail_pictures.h"
#include "platform/local/imaging/imaging.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <thread>

#include <fcntl.h>
#include <jpeglib.h>
#include <vips/vips.h>

namespace bench {

namespace {

constexpr int cell = 256;

void require(bool done, const char* what) {
    if (done)
        return;
    std::printf("photos_bench: %s\n", what);
    std::exit(3);
}

local::PictureSource sourceOf(const std::filesystem::path& path,
                              local::MediaKind kind = local::MediaKind::photo) {
    return {
        kind, "", [path] { return local::UniqueFd(open(path.c_str(), O_RDONLY | O_CLOEXEC)); }, {}};
}

void thumbnail(const local::PictureSource& source) {
    const auto pixels = local::coverPicture(source, cell, cell);
    require(pixels && local::encodeJpeg(*pixels, 85), "no thumbnail");
}

// The least that a JPEG costs: its bytes read and decoded at an eighth of the size.
void decodeEighth(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    std::vector<unsigned char> bytes(static_cast<std::size_t>(file.tellg()));
    file.seekg(0);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    jpeg_decompress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, bytes.data(), bytes.size());
    jpeg_read_header(&info, TRUE);
    info.scale_num = 1;
    info.scale_denom = 8;
    jpeg_start_decompress(&info);
    std::vector<unsigned char> row(std::size_t{info.output_width} * 3);
    auto* rows = row.data();
    while (info.output_scanline < info.output_height)
        jpeg_read_scanlines(&info, &rows, 1);
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
}

void vipsThumbnail(const std::filesystem::path& path, int width, int height) {
    VipsImage* image = nullptr;
    void* jpeg = nullptr;
    std::size_t size = 0;
    require(vips_thumbnail(path.c_str(), &image, width, "height", height, "size", VIPS_SIZE_FORCE,
                           "import_profile", "srgb", "export_profile", "srgb", nullptr) == 0 &&
                vips_jpegsave_buffer(image, &jpeg, &size, "Q", 85, nullptr) == 0,
            "the peer made no thumbnail");
    g_object_unref(image);
    g_free(jpeg);
}

int turns(const Settings& settings, int usual) {
    return std::min(settings.repeats, usual);
}

void jpeg(const Settings& settings) {
    struct Case {
        const char* what;
        const char* name;
        int width, height;
        double limit;
    };
    const Case cases[] = {
        {"first thumbnail of a 12 MP JPEG", "12.jpg", 4000, 3000, 1.3},
        {"first thumbnail of a 24 MP JPEG", "24.jpg", 6000, 4000, 1.3},
        {"first thumbnail of a 24 MP progressive JPEG", "24-progressive.jpg", 6000, 4000, 0.25}};
    for (const Case& one : cases) {
        const auto path = photograph(settings, one.name, one.width, one.height);
        const auto source = sourceOf(path);
        const auto made = [&] { thumbnail(source); };
        const auto decoded = [&] { decodeEighth(path); };
        const Medians m = alternate(turns(settings, 25), made, decoded);
        report({one.what, "1/8 decode of the file in process", m.ours, m.floor, one.limit});
    }
}

void repeated(const Settings& settings) {
    const auto path = photograph(settings, "12.jpg", 4000, 3000);
    const auto folder = settings.folder / "derivatives";
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    const auto descriptor = std::make_shared<const local::UniqueFd>(
        open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    auto source = sourceOf(path);
    source.contentKey = "00112233445566778899aabbccddeeff";
    source.derivativesFolder = [&] { return descriptor; };
    source.derivativesRoom = [] { return std::optional<std::uint64_t>(1 << 30); };
    thumbnail(source);
    const auto derivative = folder / "00" / (source.contentKey + ".jpg");
    for (int i = 0; i < 2400 && !std::filesystem::exists(derivative); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    require(std::filesystem::exists(derivative), "no derivative was made");
    const auto made = [&] { thumbnail(source); };
    const auto decoded = [&] { decodeEighth(path); };
    const Medians m = alternate(turns(settings, 50), made, decoded);
    report({"repeated thumbnail of a 12 MP JPEG", "1/8 decode of the file in process", m.ours,
            m.floor, 0.1});
}

void stills(const Settings& settings) {
    require(vips_init("photos_bench") == 0, "libvips does not start");
    vips_cache_set_max(0); // it would answer the second turn from memory
    for (const char* name :
         {"12.png", "12.webp", "12.tif", "12.gif", "12.heic", "12.avif", "12.jxl"}) {
        const auto path = photograph(settings, name, 4000, 3000);
        const auto source = sourceOf(path);
        const Medians m = alternate(
            turns(settings, 7), [&] { thumbnail(source); },
            [&] { vipsThumbnail(path, (cell * 4 + 2) / 3, cell); });
        report({std::string("first thumbnail of a 12 MP picture, ") + (name + 3),
                "vips_thumbnail in process", m.ours, m.floor, 1.2});
    }
}

void videos(const Settings& settings) {
    const auto path = video(settings);
    const auto source = sourceOf(path, local::MediaKind::video);
    const std::string command = "ffmpegthumbnailer -s 256 -i '" + path.string() + "' -o '" +
                                (settings.folder / "peer.jpg").string() + "' >/dev/null 2>&1";
    const Medians m = alternate(
        turns(settings, 25), [&] { thumbnail(source); },
        // NOLINTNEXTLINE(bugprone-command-processor)
        [&] { require(std::system(command.c_str()) == 0, "ffmpegthumbnailer failed"); });
    report({"first poster of a 1080p video", "ffmpegthumbnailer", m.ours, m.floor, 0.5});
}

double residentMiB() {
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word)
        if (word == "VmRSS:") {
            double kib = 0;
            status >> kib;
            return kib / 1024;
        }
    return 0;
}

void memory(const Settings& settings) {
    const auto source = sourceOf(photograph(settings, "2.jpg", 1632, 1224));
    thumbnail(source);
    const double before = residentMiB();
    for (int i = 0; i < settings.thumbnails; ++i)
        thumbnail(source);
    report({"host memory after " + std::to_string(settings.thumbnails) + " thumbnails",
            "an allowance of 32 MiB", residentMiB() - before, 32, 1, "MiB"});
}

const Registration registrations[] = {
    // First, before peers have grown this process.
    {"thumbnails-memory", "what the host keeps after many thumbnails", memory},
    {"thumbnails-jpeg", "first thumbnails of large JPEGs", jpeg},
    {"thumbnails-repeated", "thumbnails from a kept derivative", repeated},
    {"thumbnails-stills", "first thumbnails of other stills", stills},
    {"thumbnails-video", "posters of videos", videos},
};

} // namespace

} // namespace bench
