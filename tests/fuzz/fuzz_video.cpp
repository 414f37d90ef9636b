// Videos: the header, and one key frame.
#include "tests/fuzz/memory_file.h"

#include "platform/local/imaging/worker/video.h"

#include <exception>

using namespace local::imaging;

namespace {

void decode(const FileInput& input, const Target& target) {
    try {
        fuzz::check(inspectVideo(input));
    } catch (const Failure&) {
    } catch (const std::exception&) {
    }
    try {
        fuzz::check(videoPicture(input, target));
    } catch (const Failure&) {
    } catch (const std::exception&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const local::UniqueFd file = fuzz::memoryFile(data, size);
    const FileInput input(file.get());
    decode(input, Target{64, 48});
    return 0;
}
