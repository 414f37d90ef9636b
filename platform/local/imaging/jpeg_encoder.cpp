// encodeJpeg: the only codec work in the host's process, on pixels that are its own.
#include "platform/local/imaging/imaging.h"
#include "platform/local/imaging/wire/protocol.h"

#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include <jpeglib.h>

namespace local {

namespace {

struct ErrorHandler {
    jpeg_error_mgr manager;
    std::jmp_buf escape;
};

[[noreturn]] void escape(j_common_ptr info) {
    std::longjmp(reinterpret_cast<ErrorHandler*>(info->err)->escape, 1);
}

// In place of the library's own handlers, which print: everything but an error is passed over.
// Its jpeg_std_error would bring them in, and cannot be linked into a shared object statically.
void handleErrors(ErrorHandler& handler) {
    handler.manager.error_exit = escape;
    handler.manager.emit_message = [](j_common_ptr, int) {};
    handler.manager.output_message = [](j_common_ptr) {};
    handler.manager.format_message = [](j_common_ptr, char* text) { *text = 0; };
    handler.manager.reset_error_mgr = [](j_common_ptr) {};
}

// Holds nothing with a destructor, since an error jumps out of it.
bool compress(const Pixels& pixels, int quality, unsigned char** out, unsigned long* size) {
    jpeg_compress_struct info{};
    ErrorHandler handler{};
    handleErrors(handler);
    info.err = &handler.manager;
    if (setjmp(handler.escape)) {
        jpeg_destroy_compress(&info);
        return false;
    }
    jpeg_create_compress(&info);
    jpeg_mem_dest(&info, out, size);
    info.image_width = pixels.width;
    info.image_height = pixels.height;
    info.input_components = 3;
    info.in_color_space = JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, quality, TRUE);
    jpeg_start_compress(&info, TRUE);
    while (info.next_scanline < info.image_height) {
        auto* row = const_cast<JSAMPLE*>(pixels.rgb.data()) +
                    std::size_t{info.next_scanline} * pixels.width * 3;
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    return true;
}

} // namespace

std::optional<std::vector<std::uint8_t>> encodeJpeg(const Pixels& pixels, int quality) {
    const bool usable = pixels.width > 0 && pixels.height > 0 &&
                        pixels.width <= imaging::kMaxSide && pixels.height <= imaging::kMaxSide &&
                        pixels.rgb.size() == std::size_t{pixels.width} * pixels.height * 3;
    if (!usable || quality < 1 || quality > 100)
        return std::nullopt;
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    const bool done = compress(pixels, quality, &bytes, &size);
    const std::unique_ptr<unsigned char, decltype(&std::free)> owner(bytes, &std::free);
    if (!done)
        return std::nullopt;
    try {
        return std::vector<std::uint8_t>(bytes, bytes + size);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace local
