// checkWholeJpeg: the header's word is not enough for a picture that is to stand for another.
#include "platform/local/imaging/wire/read_only.h"
#include "platform/local/imaging/worker_pool.h"

#include <exception>

namespace local {

using namespace imaging;

namespace {

ImagingFailure badFile(std::string sentence) {
    return {ImagingFailure::Cause::badFile, std::move(sentence)};
}

std::variant<MediaInfo, ImagingFailure> check(int file) {
    const Request request{kRequestMark, Task::inspectWholeJpeg};
    Exchange exchanged = exchange(WorkerPool::shared(), request, file);
    if (auto* failure = std::get_if<ImagingFailure>(&exchanged))
        return std::move(*failure);
    CheckedAnswer& answer = *std::get<Reply>(exchanged).answer;
    auto* info = std::get_if<MediaInfo>(&answer.result);
    if (!info)
        return badFile(sentenceFor(answer.outcome));
    if (info->contentType != "public.jpeg")
        return badFile("It is not a JPEG.");
    return std::move(*info);
}

} // namespace

std::variant<MediaInfo, ImagingFailure> checkWholeJpeg(int fd) {
    try {
        const UniqueFd file = readOnlyDescriptor(fd);
        return file ? check(file.get()) : badFile("The file cannot be opened.");
    } catch (const std::exception&) {
        return ImagingFailure{ImagingFailure::Cause::unavailable,
                              "The picture could not be decoded."};
    }
}

} // namespace local
