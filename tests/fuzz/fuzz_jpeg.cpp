// JPEG by our own use of libjpeg-turbo: scaled, whole, and refusing what is damaged.
#include "tests/fuzz/memory_file.h"

#include "platform/local/imaging/worker/jpeg_picture.h"

#include <exception>

using namespace local::imaging;

namespace {

void decode(const Input& input, const Target& target) {
    try {
        if (const auto picture = jpegPicture(input, target))
            fuzz::check(*picture);
    } catch (const Failure&) {
    } catch (const std::exception&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const MemoryInput input(data, size);
    try {
        fuzz::check(inspectJpeg(input));
    } catch (const Failure&) {
        return 0; // decoding would stop at the same header
    }
    decode(input, Target{64, 48});
    decode(input, Target{-1, -1, true});
    return 0;
}
