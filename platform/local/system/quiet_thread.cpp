#include "platform/local/system/quiet_thread.h"

#include <pthread.h>

#include <csignal>
#include <thread>
#include <utility>

namespace local {

bool startQuietThread(std::function<void()> work) noexcept {
    // A thread begins with the mask of the one that starts it.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    bool started = false;
    try {
        std::thread(std::move(work)).detach();
        started = true;
    } catch (const std::exception&) {
        // The answer tells.
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return started;
}

} // namespace local
