#include "platform/local/imaging/derivative_maker.h"

#include "platform/local/imaging/derivative_file.h"
#include "platform/local/imaging/wire/read_only.h"
#include "platform/local/imaging/worker_pool.h"
#include "platform/local/system/quiet_thread.h"

#include <algorithm>
#include <exception>
#include <utility>

#include <sys/resource.h>

namespace local::imaging {

namespace {

constexpr std::size_t kQueueLimit = 512;
constexpr std::chrono::milliseconds kQuiet{100};
constexpr std::chrono::seconds kWorkerKept{10}; // its memory is better used elsewhere
constexpr std::chrono::minutes kPatience{2};    // at the lowest priority a job may starve
constexpr int kQuality = 90;

} // namespace

DerivativeMaker& DerivativeMaker::shared() {
    static auto* const maker = new DerivativeMaker;
    return *maker;
}

void DerivativeMaker::enqueue(const PictureSource& source) {
    const std::lock_guard lock(mutex_);
    const bool known = std::any_of(queue_.begin(), queue_.end(), [&](const PictureSource& other) {
        return other.contentKey == source.contentKey;
    });
    if (known || queue_.size() >= kQueueLimit || failed_.contains(source.contentKey))
        return;
    queue_.push_back(source);
    if (!started_)
        startThread();
    arrived_.notify_one();
}

void DerivativeMaker::startThread() {
    started_ = startQuietThread([this] { run(); });
    if (!started_)
        queue_.clear();
}

void DerivativeMaker::run() {
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), 19);
    for (;;) {
        const PictureSource source = next();
        WorkerPool::shared().waitUntilQuiet(kQuiet);
        try {
            make(source);
        } catch (const std::exception&) {
            failed_.insert(source.contentKey);
        }
    }
}

PictureSource DerivativeMaker::next() {
    std::unique_lock lock(mutex_);
    const auto hasWork = [this] { return !queue_.empty(); };
    if (!arrived_.wait_for(lock, kWorkerKept, hasWork)) {
        lock.unlock();
        worker_.reset();
        lock.lock();
        arrived_.wait(lock, hasWork);
    }
    PictureSource source = std::move(queue_.front());
    queue_.pop_front();
    return source;
}

void DerivativeMaker::make(const PictureSource& source) {
    const DerivativesFolder kept(source);
    const int folder = kept.descriptor();
    const auto room = source.derivativesRoom ? source.derivativesRoom() : std::nullopt;
    if (folder < 0 || !room)
        return;
    room_.keep(folder, *room);
    if (*room == 0 || openDerivative(folder, source.contentKey))
        return;
    const UniqueFd opened = source.open();
    const UniqueFd file = readOnlyDescriptor(opened.get());
    const auto pixels = file ? decode(source, file.get()) : std::nullopt;
    // Under the cap on sizes an extreme panorama does not cover the square: it would serve nobody.
    const bool covers = pixels && std::min(pixels->width, pixels->height) >= kDerivativeSide;
    const auto jpeg = covers ? encodeJpeg(*pixels, kQuality) : std::nullopt;
    if (!jpeg || jpeg->size() > *room - *room / 10) {
        failed_.insert(source.contentKey);
        return;
    }
    writeDerivative(folder, source.contentKey, *jpeg);
    room_.wrote(jpeg->size());
    room_.keep(folder, *room);
    // What was deleted for good meanwhile leaves nothing behind. Whoever deletes removes the file
    // first and its derivative then, so that one of the two sees the other.
    if (!source.open())
        removeDerivative(folder, source.contentKey);
}

std::optional<Pixels> DerivativeMaker::decode(const PictureSource& source, int file) {
    if (!worker_ || !worker_->isWaiting())
        worker_ = WorkerProcess::start(true);
    const Task task = source.kind == MediaKind::video ? Task::videoPicture : Task::photoPicture;
    const Request request{kRequestMark, task, 0, 0, kDerivativeSide, kDerivativeSide};
    if (!worker_ || !worker_->send(request, file)) {
        worker_.reset();
        return std::nullopt;
    }
    Reply reply = worker_->receive(task, Clock::now() + kPatience);
    if (!reply.answer || isTooLarge(*reply.answer))
        worker_.reset();
    return std::move(reply.pixels);
}

} // namespace local::imaging
