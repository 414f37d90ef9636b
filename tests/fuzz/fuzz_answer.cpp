// The host's check of what an imaging process answers, and the use an import makes of it.
#include "platform/local/change/capture_date.h"
#include "platform/local/imaging/answer.h"

#include <cstdlib>

using namespace local;
using namespace local::imaging;

namespace {

void require(bool condition) {
    if (!condition)
        std::abort();
}

void use(const MediaInfo& info) {
    require(info.width > 0 && info.height > 0);
    require(info.durationSeconds >= 0 && info.durationSeconds < 1e10);
    if (info.captured)
        millisecondsSince1970(*info.captured);
}

void use(Size size) {
    require(size.width > 0 && size.width <= kMaxSide);
    require(size.height > 0 && size.height <= kMaxSide);
    require(std::uint64_t{size.width} * size.height <= kMaxPixels);
}

void use(const CheckedPicture& picture) {
    use(picture.size);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto* const bytes = reinterpret_cast<const std::byte*>(data);
    if (const auto said = checkPictureSize(bytes, size))
        use(*said);
    for (const Task asked : {Task::inspectPhoto, Task::inspectVideo, Task::inspectWholeJpeg,
                             Task::photoPicture, Task::videoPicture}) {
        const auto answer = checkAnswer(bytes, size, asked);
        if (!answer)
            continue;
        require((answer->outcome == Outcome::done) == (answer->result.index() != 0));
        if (answer->outcome != Outcome::done)
            require(!sentenceFor(answer->outcome).empty());
        if (const auto* info = std::get_if<MediaInfo>(&answer->result))
            use(*info);
        if (const auto* picture = std::get_if<CheckedPicture>(&answer->result))
            use(*picture);
    }
    return 0;
}
