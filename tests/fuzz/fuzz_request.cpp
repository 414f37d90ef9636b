// The imaging process's check of what it is asked.
#include "platform/local/imaging/worker/request.h"

#include <cstdlib>

using namespace local::imaging;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto request = checkRequest(reinterpret_cast<const std::byte*>(data), size);
    if (!request)
        return 0;
    if (request->task > kLastTask)
        std::abort();
    for (const Size source : {Size{1, 1}, Size{kMaxSide, 1}, Size{4000, 3000}}) {
        if (!makesPicture(request->task))
            break;
        const Size covered = coverSize(source, request->targetWidth, request->targetHeight);
        if (covered.width == 0 || covered.height == 0 || covered.width > kMaxSide ||
            covered.height > kMaxSide || std::uint64_t{covered.width} * covered.height > kMaxPixels)
            std::abort();
    }
    return 0;
}
