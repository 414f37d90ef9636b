#include "platform/local/imaging/worker_pool.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace local::imaging {

// Handed on, so that the place in the pool is given back even when starting a worker throws.
WorkerLease::WorkerLease(WorkerPool& pool, std::unique_ptr<WorkerProcess> idle)
    : WorkerLease(pool) {
    worker_ = std::move(idle);
    if (!worker_)
        replaceWorker();
}

WorkerLease::~WorkerLease() {
    if (!kept_)
        worker_.reset();
    pool_.giveBack(std::move(worker_));
}

void WorkerLease::replaceWorker() {
    worker_.reset();
    worker_ = WorkerProcess::start(false, &whyNone_);
}

WorkerPool& WorkerPool::shared() {
    static auto* const pool =
        new WorkerPool(std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, 4));
    return *pool;
}

WorkerLease WorkerPool::acquire() {
    std::unique_lock lock(mutex_);
    ++waiting_;
    freed_.wait(lock, [this] { return leased_ < limit_; });
    --waiting_;
    ++leased_;
    auto idle = takeIdle();
    lock.unlock();
    return WorkerLease(*this, std::move(idle));
}

std::unique_ptr<WorkerLease> WorkerPool::tryAcquire() {
    std::unique_lock lock(mutex_);
    if (leased_ >= limit_)
        return nullptr;
    ++leased_;
    auto idle = takeIdle();
    lock.unlock();
    return std::make_unique<WorkerLease>(*this, std::move(idle));
}

std::unique_ptr<WorkerProcess> WorkerPool::takeIdle() {
    while (!idle_.empty()) {
        auto worker = std::move(idle_.back());
        idle_.pop_back();
        if (worker->isWaiting())
            return worker;
    }
    return nullptr;
}

void WorkerPool::giveBack(std::unique_ptr<WorkerProcess> worker) {
    {
        const std::lock_guard lock(mutex_);
        --leased_;
        lastUse_ = Clock::now();
        if (worker)
            idle_.push_back(std::move(worker));
    }
    // One waits for a worker, another perhaps for quiet.
    freed_.notify_all();
}

void WorkerPool::waitUntilQuiet(Clock::duration quiet) {
    std::unique_lock lock(mutex_);
    for (;;) {
        const auto quietSince = lastUse_ + quiet;
        if (leased_ == 0 && waiting_ == 0 && Clock::now() >= quietSince)
            return;
        freed_.wait_until(lock, std::max(quietSince, Clock::now() + quiet / 2));
    }
}

Clock::time_point deadlineFromNow() {
    return Clock::now() + std::chrono::seconds(kInstrumented ? 120 : 20);
}

bool isTooLarge(const CheckedAnswer& answer) {
    return answer.residentKiB > 192 * 1024;
}

bool sendTo(WorkerLease& lease, const Request& request, int file) {
    if (!lease.worker())
        return false;
    if (lease.worker()->send(request, file))
        return true;
    lease.replaceWorker();
    return lease.worker() && lease.worker()->send(request, file);
}

ImagingFailure noWorkerFor(const WorkerLease& lease) {
    return {ImagingFailure::Cause::unavailable, lease.worker() || lease.whyNone().empty()
                                                    ? "The imaging program ended while it waited."
                                                    : lease.whyNone()};
}

Exchange receiveFrom(WorkerLease& lease, Task asked, Clock::time_point deadline) {
    Reply reply = lease.worker()->receive(asked, deadline);
    if (!reply.answer)
        return ImagingFailure{ImagingFailure::Cause::crashed,
                              "The file cannot be read: it brings the imaging program down."};
    if (!isTooLarge(*reply.answer))
        lease.keepWorker();
    return reply;
}

Exchange exchange(WorkerPool& pool, const Request& request, int file) {
    WorkerLease lease = pool.acquire();
    if (!sendTo(lease, request, file))
        return noWorkerFor(lease);
    return receiveFrom(lease, request.task, deadlineFromNow());
}

} // namespace local::imaging
