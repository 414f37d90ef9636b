// Videos: the header, and one key frame.
#include "tests/fuzz/memory_file.h"

#include "platform/local/imaging/worker/video.h"

using namespace local::imaging;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const local::UniqueFd file = fuzz::memoryFile(data, size);
    const FileInput input(file.get());
    fuzz::tried([&] { fuzz::check(inspectVideo(input)); });
    fuzz::tried([&] { fuzz::check(videoPicture(input, Target{64, 48})); });
    return 0;
}
