// checkWholeJpeg: the header's word is not enough for a picture that is to stand for another.
#include "platform/local/imaging/read_only.h"
#include "platform/local/imaging/worker_pool.h"

#include <exception>

namespace local {

using namespace imaging;

namespace {

ImagingFailure badFile(std::string sentence) {
    return {ImagingFailure::Cause::badFile, std::move(sentence)};
}

std::optional<ImagingFailure> failureToDecode(int fd) {
    const UniqueFd file = readOnlyDescriptor(fd);
    if (!file)
        return badFile("The file cannot be opened.");
    // At full size nothing of the file is left out.
    const Request request{kRequestMark, Task::photoPicture, kCoveredOnly, 0, -1, -1};
    const Exchange exchanged = exchange(WorkerPool::shared(), request, file.get());
    if (const auto* cause = std::get_if<ImagingFailure::Cause>(&exchanged))
        return ImagingFailure{*cause, "The picture could not be decoded."};
    const Reply& reply = std::get<Reply>(exchanged);
    if (!reply.pixels)
        return badFile(sentenceFor(reply.answer->outcome));
    return std::nullopt;
}

} // namespace

std::variant<MediaInfo, ImagingFailure> checkWholeJpeg(int fd) {
    try {
        auto header = Inspection(fd, MediaKind::photo).finish();
        const auto* info = std::get_if<MediaInfo>(&header);
        if (!info)
            return header;
        if (info->contentType != "public.jpeg")
            return badFile("It is not a JPEG.");
        if (auto failure = failureToDecode(fd))
            return std::move(*failure);
        return header;
    } catch (const std::exception&) {
        return ImagingFailure{ImagingFailure::Cause::unavailable,
                              "The picture could not be decoded."};
    }
}

} // namespace local
