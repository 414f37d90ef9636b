#include "platform/local/imaging/worker/threads.h"

#include "platform/local/imaging/wire/protocol.h"

#include <array>
#include <cerrno>

#include <dlfcn.h>
#include <pthread.h>

namespace local::imaging {

namespace {

using Work = void* (*)(void*);

// Four decode the tiles of one HEIF picture at a time, each with up to three threads of its codec,
// and four work on what they make.
constexpr std::size_t kThreads = 24;
constexpr std::size_t kStackSize = 4 << 20;

struct Worker {
    enum class State { free, working, finished };
    State state = State::free;
    bool detached = false;
    pthread_t thread{};
    pthread_cond_t changed = PTHREAD_COND_INITIALIZER;
    Work work = nullptr;
    void* argument = nullptr;
    void* result = nullptr;
};

// Of the C library rather than of C++'s, which would start threads through what stands here.
pthread_mutex_t g_mutex = PTHREAD_MUTEX_INITIALIZER;
std::array<Worker, kThreads> g_workers;
bool g_started = false;
std::size_t g_running = 0;
pthread_cond_t g_oneMoreRuns = PTHREAD_COND_INITIALIZER;

class Lock {
public:
    Lock() { pthread_mutex_lock(&g_mutex); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock() { pthread_mutex_unlock(&g_mutex); }
};

template <class Function>
Function original(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

void* serve(void* which) {
    auto& self = *static_cast<Worker*>(which);
    {
        const Lock lock;
        ++g_running;
        pthread_cond_signal(&g_oneMoreRuns);
    }
    for (;;) {
        Work work = nullptr;
        void* argument = nullptr;
        {
            const Lock lock;
            while (self.state != Worker::State::working)
                pthread_cond_wait(&self.changed, &g_mutex);
            work = self.work;
            argument = self.argument;
        }
        void* const result = work(argument);
        const Lock lock;
        self.result = result;
        self.state = self.detached ? Worker::State::free : Worker::State::finished;
        pthread_cond_broadcast(&self.changed);
    }
}

// Those below with the lock held.

Worker* freeWorker() {
    for (Worker& worker : g_workers)
        if (worker.state == Worker::State::free)
            return &worker;
    return nullptr;
}

Worker* workerOf(pthread_t thread) {
    for (Worker& worker : g_workers)
        if (worker.state != Worker::State::free && pthread_equal(worker.thread, thread))
            return &worker;
    return nullptr;
}

int create(pthread_t* thread, const pthread_attr_t* attributes, Work work, void* argument) {
    static const auto system =
        original<int (*)(pthread_t*, const pthread_attr_t*, Work, void*)>("pthread_create");
    const Lock lock;
    if (!g_started)
        return system(thread, attributes, work, argument);
    Worker* const worker = freeWorker();
    if (!worker)
        return EAGAIN;
    int detached = PTHREAD_CREATE_JOINABLE;
    if (attributes)
        pthread_attr_getdetachstate(attributes, &detached);
    worker->detached = detached == PTHREAD_CREATE_DETACHED;
    worker->work = work;
    worker->argument = argument;
    worker->state = Worker::State::working;
    *thread = worker->thread;
    pthread_cond_broadcast(&worker->changed);
    return 0;
}

// Whether the thread is one of ours, which is then free again.
[[maybe_unused]] bool join(pthread_t thread, void** result) {
    const Lock lock;
    Worker* const worker = workerOf(thread);
    if (!worker)
        return false;
    while (worker->state != Worker::State::finished)
        pthread_cond_wait(&worker->changed, &g_mutex);
    if (result)
        *result = worker->result;
    worker->state = Worker::State::free;
    return true;
}

[[maybe_unused]] bool detach(pthread_t thread) {
    const Lock lock;
    Worker* const worker = workerOf(thread);
    if (!worker)
        return false;
    worker->detached = true;
    if (worker->state == Worker::State::finished)
        worker->state = Worker::State::free;
    return true;
}

} // namespace

bool startThreads() {
    if (kInstrumented)
        return true; // it wants to start threads itself, and no filter keeps it from that
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, kStackSize);
    bool all = true;
    for (Worker& worker : g_workers)
        all = all && create(&worker.thread, &attributes, serve, &worker) == 0;
    pthread_attr_destroy(&attributes);
    // What a thread does on its own before its work begins the sandbox would not let it do.
    const Lock lock;
    while (all && g_running < kThreads)
        pthread_cond_wait(&g_oneMoreRuns, &g_mutex);
    g_started = all;
    return all;
}

} // namespace local::imaging

#ifndef __SANITIZE_ADDRESS__
extern "C" {

// The C library's declarations say that these throw nothing.
[[gnu::visibility("default")]] int pthread_create(pthread_t* thread,
                                                  const pthread_attr_t* attributes,
                                                  void* (*work)(void*), void* argument) noexcept {
    return local::imaging::create(thread, attributes, work, argument);
}

[[gnu::visibility("default")]] int pthread_join(pthread_t thread, void** result) {
    static const auto system = local::imaging::original<int (*)(pthread_t, void**)>("pthread_join");
    return local::imaging::join(thread, result) ? 0 : system(thread, result);
}

[[gnu::visibility("default")]] int pthread_detach(pthread_t thread) noexcept {
    static const auto system = local::imaging::original<int (*)(pthread_t)>("pthread_detach");
    return local::imaging::detach(thread) ? 0 : system(thread);
}

} // extern "C"
#endif
