// Stills as the imaging process decodes them: told by their first bytes, JPEG and RAW included.
#include "tests/fuzz/memory_file.h"

#include "platform/local/imaging/worker/photo.h"
#include "platform/local/imaging/worker/vips_picture.h"

using namespace local::imaging;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    return startVips() ? 0 : 1;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const local::UniqueFd file = fuzz::memoryFile(data, size);
    const FileInput input(file.get());
    fuzz::tried([&] { fuzz::check(inspectPhoto(input)); });
    fuzz::tried([&] { fuzz::check(photoPicture(input, Target{64, 48})); });
    return 0;
}
