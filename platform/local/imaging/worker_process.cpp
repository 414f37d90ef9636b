#include "platform/local/imaging/worker_process.h"

#include "platform/local/imaging/picture_room.h"
#include "platform/local/imaging/program_path.h"
#include "platform/local/imaging/wire/packet.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>

namespace local::imaging {

namespace {

// Loading some hundred shared libraries takes a tenth of a second; much longer on a busy machine.
constexpr std::chrono::seconds kStartTime{30};

struct SpawnSettings {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;

    explicit SpawnSettings(int socket) {
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
        if (!kInstrumented) // whose reports go to standard error
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

[[noreturn]] void giveUp(int error) {
    throw std::system_error(error, std::generic_category());
}

// At most 300 bytes, as ImagingFailure has it: of a long path the end.
std::string sentenceAbout(const std::string& program, const std::string& reason) {
    constexpr std::size_t kMost = 120;
    std::size_t from = program.size() > kMost ? program.size() - kMost : 0;
    while (from < program.size() && (static_cast<unsigned char>(program[from]) & 0xc0) == 0x80)
        ++from; // no half characters
    return "Pictures cannot be read because the imaging program " +
           std::string(from > 0 ? "..." : "") + program.substr(from) + " did not start: " + reason +
           ".";
}

} // namespace

WorkerProcess::WorkerProcess(pid_t pid, UniqueFd processFd, UniqueFd socket)
    : owner_(getpid()), pid_(pid), processFd_(std::move(processFd)), socket_(std::move(socket)) {}

std::unique_ptr<WorkerProcess> WorkerProcess::start(bool background, std::string* failure) {
    std::string program = programPath();
    try {
        std::array<int, 2> pair{};
        if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, pair.data()) != 0)
            giveUp(errno);
        UniqueFd ours(pair[0]);
        UniqueFd theirs(pair[1]);
        const SpawnSettings settings(theirs.get());
        std::string priority = "--background";
        const std::array<char*, 3> arguments{program.data(), background ? priority.data() : nullptr,
                                             nullptr};
        pid_t pid = -1;
        const int error =
            posix_spawn(&pid, program.c_str(), &settings.actions, &settings.attributes,
                        arguments.data(), workerEnvironment().data());
        if (error != 0)
            giveUp(error);
        theirs.reset();
        UniqueFd processFd(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
        std::unique_ptr<WorkerProcess> worker(
            new WorkerProcess(pid, std::move(processFd), std::move(ours)));
        worker->waitForHello();
        return worker;
    } catch (const std::system_error& error) {
        if (failure)
            *failure = sentenceAbout(program, error.code().message());
    } catch (const std::exception& error) {
        if (failure)
            *failure = sentenceAbout(program, error.what());
    }
    return nullptr;
}

void WorkerProcess::waitForHello() {
    std::uint32_t hello = 0;
    const auto bytes = std::as_writable_bytes(std::span(&hello, 1));
    if (receiveBytes(bytes, Clock::now() + kStartTime) != sizeof hello || hello != kHelloMark)
        throw std::runtime_error("it ended, or its sandbox could not be set up");
}

WorkerProcess::~WorkerProcess() {
    socket_.reset();
    if (owner_ != getpid())
        return;
    if (processFd_)
        syscall(SYS_pidfd_send_signal, processFd_.get(), SIGKILL, nullptr, 0);
    else
        kill(pid_, SIGKILL);
    reap();
}

// Only ours, so the host's own handling of its children is not disturbed. ECHILD: it is gone
// already, because the host reaps everybody, or ignores SIGCHLD and so lets the system do it. Then
// its number may be another's by now, and only the descriptor still names it.
void WorkerProcess::reap() const {
    // <sys/wait.h> has the name from glibc 2.36 on, the kernel from 5.4.
    constexpr auto byDescriptor = static_cast<idtype_t>(3);
    siginfo_t ended{};
    while ((processFd_ ? waitid(byDescriptor, static_cast<id_t>(processFd_.get()), &ended, WEXITED)
                       : waitid(P_PID, static_cast<id_t>(pid_), &ended, WEXITED)) != 0 &&
           errno == EINTR) {
    }
}

bool WorkerProcess::isWaiting() const {
    pollfd entry{socket_.get(), POLLIN, 0};
    return owner_ == getpid() && poll(&entry, 1, 0) == 0;
}

bool WorkerProcess::send(const Request& request, int file) {
    return sendPacket(socket_.get(), &request, sizeof request, file);
}

// Nothing when the worker is gone or late, or sends what no worker sends.
std::optional<std::size_t> WorkerProcess::receiveBytes(std::span<std::byte> bytes,
                                                       Clock::time_point deadline) {
    UniqueFd uncalledFor;
    if (!waitUntilReadable(socket_.get(), deadline))
        return std::nullopt;
    const auto size = receivePacket(socket_.get(), bytes.data(), bytes.size(), uncalledFor);
    if (size <= 0 || uncalledFor)
        return std::nullopt;
    return static_cast<std::size_t>(size);
}

Reply WorkerProcess::receive(Task asked, Clock::time_point deadline) {
    std::array<std::byte, sizeof(Answer) + 1> bytes{};
    auto size = receiveBytes(bytes, deadline);
    std::optional<PictureRoom> room;
    const auto said =
        size && makesPicture(asked) ? checkPictureSize(bytes.data(), *size) : std::nullopt;
    if (said) {
        room.emplace(*said);
        if (!sendPacket(socket_.get(), &kRoomMark, sizeof kRoomMark, room->descriptor()))
            return {};
        size = receiveBytes(bytes, deadline);
    }
    if (!size)
        return {};
    Reply reply{checkAnswer(bytes.data(), *size, asked), {}};
    if (!reply.answer)
        return {};
    if (const auto* picture = std::get_if<CheckedPicture>(&reply.answer->result)) {
        if (!room || room->size() != picture->size)
            return {};
        reply.pixels = room->read();
    }
    return reply;
}

} // namespace local::imaging
