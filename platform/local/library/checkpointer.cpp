#include "platform/local/library/checkpointer.h"

#include "platform/local/library/library.h"
#include "platform/local/system/quiet_thread.h"

#include <condition_variable>
#include <mutex>

namespace local {

namespace {

constexpr int longLogPages = 1000; // 4 MiB: SQLite's own default for a checkpoint
constexpr int veryLongLogPages = 16 * longLogPages;

struct Work {
    std::mutex mutex;
    std::condition_variable wanted;
    std::weak_ptr<Library> library;
    int pages = 0; // 0: nothing to do
    bool started = false;
};

// Never destroyed, because its thread outlives the end of the process's main function.
Work& work() {
    static Work* const shared = new Work;
    return *shared;
}

void checkpoint(Library& library, int pages) {
    try {
        const ConnectionLease connection = library.connection();
        // PASSIVE waits for nobody. A log that readers have kept from being reused for long is
        // worth one try to start it anew, which waits for nobody either: without a busy handler.
        sqlite3_wal_checkpoint_v2(connection->handle(), nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr,
                                  nullptr);
        if (pages < veryLongLogPages)
            return;
        sqlite3_busy_handler(connection->handle(), nullptr, nullptr);
        sqlite3_wal_checkpoint_v2(connection->handle(), nullptr, SQLITE_CHECKPOINT_TRUNCATE,
                                  nullptr, nullptr);
        connection->waitWithoutLimit();
    } catch (const std::exception&) {
        // The next commit asks again.
    }
}

void workForever() {
    Work& shared = work();
    for (;;) {
        std::shared_ptr<Library> library;
        int pages = 0;
        {
            std::unique_lock lock(shared.mutex);
            shared.wanted.wait(lock, [&] { return shared.pages > 0; });
            library = shared.library.lock();
            pages = std::exchange(shared.pages, 0);
        }
        if (library)
            checkpoint(*library, pages);
    }
}

} // namespace

void checkpointWhenLong(const std::shared_ptr<Library>& library, int logPages) noexcept {
    if (logPages < longLogPages)
        return;
    Work& shared = work();
    const std::scoped_lock lock(shared.mutex);
    shared.library = library;
    shared.pages = logPages;
    // Without a thread the log grows until a later commit finds one.
    shared.started = shared.started || startQuietThread(workForever);
    shared.wanted.notify_one();
}

} // namespace local
