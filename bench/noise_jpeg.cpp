#include "bench/noise_jpeg.h"

// jpeglib.h needs these before it.
#include <cstddef>
#include <cstdio>

#include <jpeglib.h>

#include <random>

namespace bench {

namespace {

// Noise at quality 95 takes about 1.18 bytes a pixel.
constexpr double bytesPerPixel = 1.18;

void writeNoise(const std::string& path, JDIMENSION width, JDIMENSION height, unsigned seed) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    jpeg_compress_struct compress{};
    jpeg_error_mgr errors{};
    compress.err = jpeg_std_error(&errors);
    jpeg_create_compress(&compress);
    jpeg_stdio_dest(&compress, file);
    compress.image_width = width;
    compress.image_height = height;
    compress.input_components = 3;
    compress.in_color_space = JCS_RGB;
    jpeg_set_defaults(&compress);
    jpeg_set_quality(&compress, 95, TRUE);
    jpeg_start_compress(&compress, TRUE);
    std::minstd_rand random(seed);
    std::vector<JSAMPLE> row(std::size_t{width} * 3);
    while (compress.next_scanline < height) {
        for (JSAMPLE& sample : row)
            sample = static_cast<JSAMPLE>(random() >> 8);
        JSAMPROW rows = row.data();
        jpeg_write_scanlines(&compress, &rows, 1);
    }
    jpeg_finish_compress(&compress);
    jpeg_destroy_compress(&compress);
    std::fclose(file);
}

} // namespace

std::vector<std::string> noiseJpegs(const std::filesystem::path& folder, int count,
                                    std::size_t bytes) {
    std::filesystem::create_directories(folder);
    std::vector<std::string> paths;
    for (int i = 0; i < count; ++i) {
        const std::string path = (folder / ("noise" + std::to_string(i) + ".jpg")).string();
        const JDIMENSION width = 1280;
        const auto height =
            static_cast<JDIMENSION>(static_cast<double>(bytes) / bytesPerPixel / width);
        if (!std::filesystem::exists(path))
            writeNoise(path, width, height, static_cast<unsigned>(i + 1));
        paths.push_back(path);
    }
    return paths;
}

} // namespace bench
