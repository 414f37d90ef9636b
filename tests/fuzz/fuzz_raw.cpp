// Camera RAW, whatever the first bytes say.
#include "tests/fuzz/memory_file.h"

#include "platform/local/imaging/worker/raw_picture.h"
#include "platform/local/imaging/worker/tiff.h"

using namespace local::imaging;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const local::UniqueFd file = fuzz::memoryFile(data, size);
    const FileInput input(file.get());
    fuzz::tried(
        [&] { fuzz::check(inspectRaw(input, FileFormat::otherRaw, readTiff(input).captured)); });
    fuzz::tried([&] { fuzz::check(rawPicture(input, Target{64, 48})); });
    return 0;
}
