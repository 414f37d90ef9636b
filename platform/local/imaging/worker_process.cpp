#include "platform/local/imaging/worker_process.h"

#include "platform/local/imaging/packet.h"

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <exception>
#include <string>
#include <utility>

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <poll.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>

namespace local::imaging {

namespace {

// Loading some hundred shared libraries takes a tenth of a second; much longer on a busy machine.
constexpr std::chrono::seconds kStartTime{30};

// The file of this process's program; the name that it was started by need not be a path.
std::string mainProgram() {
    std::array<char, PATH_MAX> path{};
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    return length > 0 ? std::string(path.data(), static_cast<std::size_t>(length)) : std::string();
}

// Beside the shared object or the program that holds this function.
std::string programPath() {
    Dl_info info{};
    link_map* map = nullptr;
    if (dladdr1(reinterpret_cast<const void*>(&programPath), &info, reinterpret_cast<void**>(&map),
                RTLD_DL_LINKMAP) == 0 ||
        !info.dli_fname)
        return {};
    // The dynamic linker's list has no name for the main program.
    const bool isProgram = map && (!map->l_name || !*map->l_name);
    const std::string object = isProgram ? mainProgram() : info.dli_fname;
    const auto slash = object.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : object.substr(0, slash);
    return folder + "/photos-kit-imaging";
}

struct SpawnSettings {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;

    explicit SpawnSettings(int socket) {
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
        if (!kSanitized) // whose reports go to standard error
            posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, socket, kWorkerSocket);
        // Descriptors that the host's other code forgot to mark are none of the worker's.
        posix_spawn_file_actions_addclosefrom_np(&actions, kWorkerSocket + 1);

        posix_spawnattr_init(&attributes);
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setsigdefault(&attributes, &all);
        posix_spawnattr_setpgroup(&attributes, 0); // a Ctrl-C in the terminal is not for it
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF |
                                                  POSIX_SPAWN_SETPGROUP);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
};

// The host's variables stay the host's. UTC: RAW time stamps pass through mktime and back.
// VIPSHOME: keeps libvips from loading every module it finds; the worker loads the two it needs.
std::array<char*, 5> workerEnvironment() {
    // Arrays, because an object would be destroyed while the host ends and others still call.
    static char timeZone[] = "TZ=UTC";
    static char locale[] = "LC_ALL=C";
    static char rawThreads[] = "OMP_NUM_THREADS=1";
    static char noModules[] = "VIPSHOME=/nonexistent";
    return {timeZone, locale, rawThreads, noModules, nullptr};
}

bool waitUntilReadable(int fd, Clock::time_point deadline) {
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd entry{fd, POLLIN, 0};
        const int ready = poll(&entry, 1, static_cast<int>(std::max<std::int64_t>(left, 0)));
        if (ready > 0)
            return true;
        if (ready == 0 || errno != EINTR)
            return false;
    }
}

// Copies the pixels out with pread: a worker that shrinks its memfd meanwhile cannot hurt us as
// it could through a mapping.
std::optional<Pixels> copyPixels(int memory, const CheckedPicture& picture) {
    struct stat status {};
    if (fstat(memory, &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    Pixels pixels{picture.width, picture.height, {}};
    pixels.rgb.resize(std::size_t{picture.width} * picture.height * 3);
    std::size_t done = 0;
    while (done < pixels.rgb.size()) {
        const ssize_t got = pread(memory, pixels.rgb.data() + done, pixels.rgb.size() - done,
                                  static_cast<off_t>(done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return std::nullopt;
        done += static_cast<std::size_t>(got);
    }
    return pixels;
}

} // namespace

WorkerProcess::WorkerProcess(pid_t pid, UniqueFd processFd, UniqueFd socket)
    : owner_(getpid()), pid_(pid), processFd_(std::move(processFd)), socket_(std::move(socket)) {}

std::unique_ptr<WorkerProcess> WorkerProcess::start(bool background) noexcept {
    try {
        return startOrThrow(background);
    } catch (const std::exception&) {
        return nullptr;
    }
}

std::unique_ptr<WorkerProcess> WorkerProcess::startOrThrow(bool background) {
    std::string program = programPath();
    std::array<int, 2> pair{};
    if (program.empty() || socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, pair.data()) != 0)
        return nullptr;
    UniqueFd ours(pair[0]);
    UniqueFd theirs(pair[1]);

    const SpawnSettings settings(theirs.get());
    std::string priority = "--background";
    const std::array<char*, 3> arguments{program.data(), background ? priority.data() : nullptr,
                                         nullptr};
    pid_t pid = -1;
    if (posix_spawn(&pid, program.c_str(), &settings.actions, &settings.attributes,
                    arguments.data(), workerEnvironment().data()) != 0)
        return nullptr;
    theirs.reset();
    UniqueFd processFd(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
    std::unique_ptr<WorkerProcess> worker(
        new WorkerProcess(pid, std::move(processFd), std::move(ours)));

    std::uint32_t hello = 0;
    UniqueFd nothing;
    if (!waitUntilReadable(worker->socket_.get(), Clock::now() + kStartTime) ||
        receivePacket(worker->socket_.get(), &hello, sizeof hello, nothing) != sizeof hello ||
        hello != kHelloMark)
        return nullptr;
    return worker;
}

WorkerProcess::~WorkerProcess() {
    socket_.reset();
    if (owner_ != getpid())
        return;
    if (processFd_)
        syscall(SYS_pidfd_send_signal, processFd_.get(), SIGKILL, nullptr, 0);
    else
        kill(pid_, SIGKILL);
    // Only ours, so the host's own handling of its children is not disturbed; ECHILD when the
    // host reaps everybody.
    while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
    }
}

bool WorkerProcess::isWaiting() const {
    pollfd entry{socket_.get(), POLLIN, 0};
    return owner_ == getpid() && poll(&entry, 1, 0) == 0;
}

bool WorkerProcess::send(const Request& request, int file) {
    return sendPacket(socket_.get(), &request, sizeof request, file);
}

Reply WorkerProcess::receive(Task asked, Clock::time_point deadline) {
    std::array<std::byte, sizeof(Answer) + 1> bytes{};
    UniqueFd memory;
    if (!waitUntilReadable(socket_.get(), deadline))
        return {};
    const auto size = receivePacket(socket_.get(), bytes.data(), bytes.size(), memory);
    if (size <= 0)
        return {};
    Reply reply{checkAnswer(bytes.data(), static_cast<std::size_t>(size), asked), {}};
    if (!reply.answer)
        return {};
    if (const auto* picture = std::get_if<CheckedPicture>(&reply.answer->result)) {
        reply.pixels = copyPixels(memory.get(), *picture);
        if (!reply.pixels)
            return {};
    }
    return reply;
}

} // namespace local::imaging
