// Inspection: the header of a file, read in two halves.
#include "platform/local/imaging/wire/read_only.h"
#include "platform/local/imaging/worker_pool.h"

#include <exception>

namespace local {

using namespace imaging;

struct Inspection::State {
    Request request{};
    UniqueFd file;
    // Set while a worker is at it. The first half takes a worker only when one is free: whoever
    // holds an unfinished inspection and waited for a second worker could wait for itself.
    std::unique_ptr<WorkerLease> lease;
    Clock::time_point deadline;
};

namespace {

// This process itself has no memory or descriptor to spare.
ImagingFailure noMeans(const char* reason) {
    return {ImagingFailure::Cause::unavailable,
            std::string("Pictures cannot be read now: ") + reason + "."};
}

std::variant<MediaInfo, ImagingFailure> outcomeOf(const Exchange& exchanged) {
    if (const auto* failure = std::get_if<ImagingFailure>(&exchanged))
        return *failure;
    const CheckedAnswer& answer = *std::get<Reply>(exchanged).answer;
    if (const auto* info = std::get_if<MediaInfo>(&answer.result))
        return *info;
    return ImagingFailure{ImagingFailure::Cause::badFile, sentenceFor(answer.outcome)};
}

} // namespace

Inspection::Inspection(int fd, MediaKind kind) {
    try {
        state_ = std::make_unique<State>();
        state_->request = {kRequestMark,
                           kind == MediaKind::photo ? Task::inspectPhoto : Task::inspectVideo};
        state_->file = readOnlyDescriptor(fd);
        if (!state_->file)
            return;
        state_->lease = WorkerPool::shared().tryAcquire();
        if (!state_->lease)
            return;
        state_->deadline = deadlineFromNow();
        if (!sendTo(*state_->lease, state_->request, state_->file.get()))
            state_->lease.reset();
    } catch (const std::exception&) {
        state_.reset();
    }
}

Inspection::~Inspection() = default;

std::variant<MediaInfo, ImagingFailure> Inspection::finish() {
    const std::unique_ptr<State> state = std::move(state_);
    if (!state)
        return noMeans("memory is exhausted");
    if (!state->file)
        return ImagingFailure{ImagingFailure::Cause::badFile, "The file cannot be opened."};
    try {
        if (!state->lease)
            return outcomeOf(exchange(WorkerPool::shared(), state->request, state->file.get()));
        return outcomeOf(receiveFrom(*state->lease, state->request.task, state->deadline));
    } catch (const std::exception& error) {
        return noMeans(error.what());
    }
}

} // namespace local
