// One running photos-kit-imaging, as the host holds it. Used by one thread at a time.
#pragma once

#include "platform/local/imaging/answer.h"
#include "platform/local/system/unique_fd.h"

#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include <sys/types.h>

namespace local::imaging {

using Clock = std::chrono::steady_clock;

// What an exchange came to. Exactly one of the members says so.
struct Reply {
    std::optional<CheckedAnswer> answer; // nothing: the worker died, overran or talked nonsense
    std::optional<Pixels> pixels;        // the picture, when one was asked for and made
};

class WorkerProcess {
public:
    // Starts a worker and waits until its sandbox is up; null when that cannot be done, and then
    // `failure`, when given, gets a sentence that says why. A background worker runs at the lowest
    // priority.
    static std::unique_ptr<WorkerProcess> start(bool background, std::string* failure = nullptr);

    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;
    ~WorkerProcess(); // ends the process and reaps it

    // Whether it still waits for a request. One that somebody ended while it was idle is no fault
    // of the next file.
    bool isWaiting() const;

    // False when the worker is gone. `file` is borrowed and must be open for reading only.
    [[nodiscard]] bool send(const Request& request, int file);

    // Waits for the answer to the request just sent, until `deadline`. Afterwards the worker can
    // be used again only when `answer` is set. Throws when this process has no memory or descriptor
    // left for the picture.
    Reply receive(Task asked, Clock::time_point deadline);

private:
    WorkerProcess(pid_t pid, UniqueFd processFd, UniqueFd socket);
    void waitForHello();
    std::optional<std::size_t> receiveBytes(std::span<std::byte> bytes, Clock::time_point deadline);
    void reap() const;

    pid_t owner_; // a forked copy of the host has the socket too, but the worker is not its own
    pid_t pid_;
    UniqueFd processFd_; // names the process even when another has reaped it
    UniqueFd socket_;
};

} // namespace local::imaging
