// JPEG by our own use of libjpeg-turbo: scaled, whole, and refusing what is damaged.
#include "tests/fuzz/memory_file.h"

#include "platform/local/imaging/worker/jpeg_picture.h"

using namespace local::imaging;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const MemoryInput input(data, size);
    try {
        fuzz::check(inspectJpeg(input));
    } catch (const Failure&) {
        return 0; // decoding would stop at the same header
    }
    for (const Target& target : {Target{64, 48}, Target{-1, -1, true}})
        fuzz::tried([&] {
            if (const auto picture = jpegPicture(input, target))
                fuzz::check(*picture);
        });
    return 0;
}
