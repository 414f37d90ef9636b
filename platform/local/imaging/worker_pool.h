// The workers that serve callers: at most four, no more than processors, started when needed.
#pragma once

#include "platform/local/imaging/worker_process.h"

#include <condition_variable>
#include <mutex>
#include <vector>

namespace local::imaging {

class WorkerPool;

// The right to one worker, and the worker unless it could not be started.
class WorkerLease {
public:
    // Starts a worker where it is given none.
    WorkerLease(WorkerPool& pool, std::unique_ptr<WorkerProcess> idle);
    WorkerLease(const WorkerLease&) = delete;
    WorkerLease& operator=(const WorkerLease&) = delete;
    ~WorkerLease(); // ends the worker unless it was kept

    WorkerProcess* worker() const { return worker_.get(); }
    const std::string& whyNone() const { return whyNone_; } // a sentence when there is no worker
    void replaceWorker();                                   // by a fresh one
    void keepWorker() { kept_ = true; }

private:
    explicit WorkerLease(WorkerPool& pool) : pool_(pool) {}

    WorkerPool& pool_;
    std::unique_ptr<WorkerProcess> worker_;
    std::string whyNone_;
    bool kept_ = false;
};

class WorkerPool {
public:
    static WorkerPool& shared(); // never destroyed: the host may end while others still call

    explicit WorkerPool(std::size_t limit) : limit_(limit) { idle_.reserve(limit); }

    WorkerLease acquire();                     // waits for a free one, without limit
    std::unique_ptr<WorkerLease> tryAcquire(); // null when none is free

    // Waits until no lease is held or waited for, and none was for this long.
    void waitUntilQuiet(Clock::duration quiet);

private:
    friend class WorkerLease;
    void giveBack(std::unique_ptr<WorkerProcess> worker);
    std::unique_ptr<WorkerProcess> takeIdle(); // null when none is

    const std::size_t limit_;
    std::mutex mutex_;
    std::condition_variable freed_;
    std::vector<std::unique_ptr<WorkerProcess>> idle_; // the one used last at the end
    std::size_t leased_ = 0;
    std::size_t waiting_ = 0;
    Clock::time_point lastUse_ = Clock::now();
};

// A request to a worker and what came of it: a reply with its answer set, or why there is none.
using Exchange = std::variant<Reply, ImagingFailure>;

Exchange exchange(WorkerPool& pool, const Request& request, int file);

// The two halves of an exchange; `send` may replace the lease's worker.
[[nodiscard]] bool sendTo(WorkerLease& lease, const Request& request, int file);
ImagingFailure noWorkerFor(const WorkerLease& lease); // after `sendTo` answered false
Exchange receiveFrom(WorkerLease& lease, Task asked, Clock::time_point deadline);

// How long a worker may take, from the request to the answer. Thumbnails of the largest stills
// take some seconds; nobody waits longer for one.
Clock::time_point deadlineFromNow();

// A worker that keeps more than this after a request is replaced. Freshly started it has 60 MiB;
// some decoders leave 200 behind.
bool isTooLarge(const CheckedAnswer& answer);

} // namespace local::imaging
