// coverPicture: from the kept derivative when that is enough, else from the file itself.
#include "platform/local/imaging/derivative_file.h"
#include "platform/local/imaging/derivative_maker.h"
#include "platform/local/imaging/key_set.h"
#include "platform/local/imaging/wire/cover_size.h"
#include "platform/local/imaging/wire/read_only.h"
#include "platform/local/imaging/worker_pool.h"

#include <algorithm>
#include <exception>

namespace local {

using namespace imaging;

namespace {

// Files that brought a worker down. The set is bounded: a forgotten one costs another worker.
KeySet& badFiles() {
    static auto* const keys = new KeySet(4096);
    return *keys;
}

std::optional<Pixels> fromDerivative(const PictureSource& source, double width, double height) {
    if (isFullSize(width, height) || std::min(width, height) > kDerivativeSide)
        return std::nullopt;
    const DerivativesFolder folder(source);
    const UniqueFd file = openDerivative(folder.descriptor(), source.contentKey);
    if (!file)
        return std::nullopt;
    noteUse(file.get());
    const Request request{kRequestMark, Task::photoPicture, kCoveredOnly, 0, width, height};
    Exchange exchanged = exchange(WorkerPool::shared(), request, file.get());
    auto* reply = std::get_if<Reply>(&exchanged);
    if (reply && reply->pixels)
        return std::move(reply->pixels);
    const bool sound =
        reply ? reply->answer->outcome == Outcome::notCovered
              : std::get<ImagingFailure>(exchanged).cause == ImagingFailure::Cause::unavailable;
    if (!sound)
        removeDerivative(folder.descriptor(), source.contentKey);
    return std::nullopt;
}

// Not worth a file where decoding the source costs as little as decoding the derivative would.
bool deservesDerivative(const PictureSource& source, const CheckedPicture& picture) {
    constexpr std::uint64_t kCheapPixels = 1'500'000;
    return source.kind == MediaKind::video || picture.sourcePixels > kCheapPixels;
}

std::optional<Pixels> fromSource(const PictureSource& source, double width, double height) {
    const UniqueFd opened = source.open ? source.open() : UniqueFd();
    const UniqueFd file = readOnlyDescriptor(opened.get());
    if (!file)
        return std::nullopt;
    const Task task = source.kind == MediaKind::video ? Task::videoPicture : Task::photoPicture;
    const Request request{kRequestMark, task, 0, 0, width, height};
    Exchange exchanged = exchange(WorkerPool::shared(), request, file.get());
    auto* reply = std::get_if<Reply>(&exchanged);
    if (!reply) {
        if (std::get<ImagingFailure>(exchanged).cause == ImagingFailure::Cause::crashed)
            badFiles().insert(source.contentKey);
        return std::nullopt;
    }
    const auto* picture = std::get_if<CheckedPicture>(&reply->answer->result);
    if (picture && deservesDerivative(source, *picture) && source.derivativesFolder)
        DerivativeMaker::shared().enqueue(source);
    return std::move(reply->pixels);
}

} // namespace

std::optional<Pixels> coverPicture(const PictureSource& source, double targetWidth,
                                   double targetHeight) {
    if (!isUsableTarget(targetWidth, targetHeight))
        return std::nullopt;
    try {
        if (badFiles().contains(source.contentKey))
            return std::nullopt;
        if (auto pixels = fromDerivative(source, targetWidth, targetHeight))
            return pixels;
        return fromSource(source, targetWidth, targetHeight);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace local
