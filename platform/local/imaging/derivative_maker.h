// Makes derivatives after the callers have been served.
#pragma once

#include "platform/local/imaging/derivative_room.h"
#include "platform/local/imaging/key_set.h"
#include "platform/local/imaging/worker_process.h"

#include <condition_variable>
#include <deque>
#include <mutex>

namespace local::imaging {

// One thread of the host, started with the first job and then kept, works when no caller has been
// served for a while, with a low-priority worker of its own that never takes a place in the pool.
// It also keeps the derivatives within their room. Nothing ever waits for the thread: the host's
// process may end at any time.
class DerivativeMaker {
public:
    static DerivativeMaker& shared(); // never destroyed

    // Notes the source for later; drops it when many wait already. Calls the source's closures
    // later, from its own thread.
    void enqueue(const PictureSource& source);

private:
    void startThread();
    void run();
    PictureSource next();
    void make(const PictureSource& source);
    std::optional<Pixels> decode(const PictureSource& source, int file);

    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<PictureSource> queue_;
    bool started_ = false;
    KeySet failed_{4096};                   // filled by the thread, asked by callers
    std::unique_ptr<WorkerProcess> worker_; // only the thread's own
    DerivativeRoom room_;                   // likewise
};

} // namespace local::imaging
