// Camera RAW, whatever the first bytes say.
#include "tests/fuzz/memory_file.h"

#include "platform/local/imaging/worker/raw_picture.h"
#include "platform/local/imaging/worker/tiff.h"

#include <exception>

using namespace local::imaging;

namespace {

void decode(const FileInput& input, const Target& target) {
    try {
        fuzz::check(inspectRaw(input, FileFormat::otherRaw, readTiff(input).captured));
    } catch (const Failure&) {
    } catch (const std::exception&) {
    }
    try {
        fuzz::check(rawPicture(input, target));
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
