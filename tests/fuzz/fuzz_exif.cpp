// What is read from a photo's metadata: the EXIF block, its texts, a TIFF's directories.
#include "platform/local/imaging/worker/exif.h"
#include "platform/local/imaging/worker/tiff.h"

#include <string_view>

using namespace local::imaging;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    readExif({data, size});
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto first = text.find('\n');
    const auto second = first == std::string_view::npos ? first : text.find('\n', first + 1);
    if (second != std::string_view::npos)
        captureTime(text.substr(0, first), text.substr(first + 1, second - first - 1),
                    text.substr(second + 1));
    isFrontLens(text);
    try {
        readTiff(MemoryInput(data, size));
    } catch (const Failure&) {
    }
    return 0;
}
