// Stands where the host expects photos-kit-imaging: one that a file has taken over. It enters the
// real sandbox and then does what the file it is asked about says: it tries what a worker must not
// be able to do, or answers what no worker should.
//
// What it tried comes back as the width of an inspected photo: see Tried.
#include "tests/local/compromised/orders.h"

#include "platform/local/imaging/wire/packet.h"
#include "platform/local/imaging/wire/protocol.h"
#include "platform/local/imaging/worker/sandbox.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <netinet/in.h>
#include <pthread.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>

using namespace local::imaging;
using compromised::Tried;

namespace {

void answer(const Answer& words, int file = -1) {
    if (!sendPacket(kWorkerSocket, &words, sizeof words, file))
        std::_Exit(0);
}

void tell(bool allowed) {
    const auto tried = static_cast<std::uint32_t>(allowed ? Tried::allowed : Tried::refused);
    answer(Answer{kAnswerMark, Outcome::done, tried, 1});
}

Answer pictureOf(std::uint32_t width, std::uint32_t height) {
    return Answer{kAnswerMark, Outcome::done, width, height, width, height};
}

local::UniqueFd roomFor(std::uint32_t width, std::uint32_t height) {
    const PictureSize words{kPictureMark, width, height};
    std::uint32_t mark = 0;
    local::UniqueFd room;
    if (!sendPacket(kWorkerSocket, &words, sizeof words, -1) ||
        receivePacket(kWorkerSocket, &mark, sizeof mark, room) != sizeof mark || !room)
        std::_Exit(1);
    return room;
}

void answerPicture(std::uint32_t width, std::uint32_t height) {
    const local::UniqueFd room = roomFor(width, height);
    answer(pictureOf(width, height));
}

// What it was given, kept from request to request.
int g_hoarded = -1;

void hoard() {
    constexpr std::uint32_t side = 1000;
    g_hoarded = roomFor(side, side).release();
    answer(pictureOf(side, side));
}

bool stillHasTheHoard() {
    struct stat status {};
    return syscall(SYS_fstat, g_hoarded, &status) != 0 || status.st_size > 0;
}

bool reopensForWriting(int file) {
    const std::string path = "/proc/self/fd/" + std::to_string(file);
    return open(path.c_str(), O_RDWR) >= 0;
}

bool connects() {
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in local{};
    local.sin_family = AF_INET;
    local.sin_port = htons(9);
    local.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const auto* address = reinterpret_cast<const sockaddr*>(&local);
    return socket >= 0 && (connect(socket, address, sizeof local) == 0 || errno == ECONNREFUSED);
}

bool runsAProgram() {
    char name[] = "/bin/true";
    char* const arguments[] = {name, nullptr};
    return execve(name, arguments, nullptr) == 0; // and is gone, without an answer
}

bool readsTheHostsMemory() {
    int here = 0;
    int there = 0;
    const iovec to{&here, sizeof here};
    const iovec from{&there, sizeof there};
    return process_vm_readv(getppid(), &to, 1, &from, 1, 0) >= 0 || errno == EFAULT;
}

// Takes and touches memory until there is no more; true when that was more than four gigabytes.
bool eatsWithoutEnd(int kind) {
    constexpr std::size_t piece = std::size_t{16} << 20;
    for (std::size_t eaten = 0; eaten < std::size_t{4} << 30; eaten += piece) {
        void* const place =
            mmap(nullptr, piece, PROT_READ | PROT_WRITE, kind | MAP_ANONYMOUS, -1, 0);
        if (place == MAP_FAILED)
            return false;
        *static_cast<volatile char*>(place) = 1;
    }
    return true;
}

void* sleepForGood(void*) {
    for (;;)
        sched_yield();
}

int startsThreads(int most) {
    pthread_t thread{};
    int started = 0;
    while (started < most && pthread_create(&thread, nullptr, sleepForGood, nullptr) == 0)
        ++started;
    return started;
}

bool clonesAThread() {
    static std::array<char, 1 << 16> stack;
    const auto endless = [](void*) -> int {
        sleepForGood(nullptr);
        return 0;
    };
    return clone(endless, stack.data() + stack.size(),
                 CLONE_VM | CLONE_FS | CLONE_FILES | CLONE_SIGHAND | CLONE_THREAD, nullptr) > 0;
}

bool looksAtAPath() {
    struct stat status {};
    return syscall(SYS_newfstatat, AT_FDCWD, "/etc/passwd", &status, AT_EMPTY_PATH) == 0;
}

bool takesMoreProcessorTime() {
    const rlimit more{100'000, RLIM_INFINITY};
    return setrlimit(RLIMIT_CPU, &more) == 0;
}

[[noreturn]] void runWithoutEnd() {
    for (;;)
        isWornOut();
}

void sendTwoDescriptors(int file) {
    Answer words = pictureOf(8, 8);
    iovec part{&words, sizeof words};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(2 * sizeof(int))> control{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(2 * sizeof(int));
    const std::array<int, 2> files{file, file};
    std::memcpy(CMSG_DATA(header), files.data(), sizeof files);
    if (sendmsg(kWorkerSocket, &message, MSG_NOSIGNAL) < 0)
        std::_Exit(1);
}

void flood() {
    for (int i = 0; i < 100; ++i) {
        const auto sent = ::send(kWorkerSocket, "nonsense", 8, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent < 0)
            return;
    }
}

void answerTooMuch() {
    const std::array<char, 4096> bytes{};
    if (!sendPacket(kWorkerSocket, bytes.data(), bytes.size(), -1))
        std::_Exit(1);
}

void attempt(std::string_view order, int file) {
    if (order == "open")
        return tell(open("/etc/passwd", O_RDONLY) >= 0);
    if (order == "create")
        return tell(open("/tmp/photos-kit-taken-over", O_WRONLY | O_CREAT, 0600) >= 0);
    if (order == "write")
        return tell(pwrite(file, "x", 1, 0) == 1 || reopensForWriting(file));
    if (order == "truncate")
        return tell(ftruncate(file, 0) == 0);
    if (order == "connect")
        return tell(connects());
    if (order == "exec")
        return tell(runsAProgram());
    if (order == "fork")
        return tell(fork() >= 0);
    if (order == "kill")
        return tell(kill(getppid(), SIGKILL) == 0);
    if (order == "trace")
        return tell(ptrace(PTRACE_ATTACH, getppid(), nullptr, nullptr) == 0);
    if (order == "peek")
        return tell(readsTheHostsMemory());
    if (order == "renew")
        return tell(takesMoreProcessorTime());
    if (order == "look")
        return tell(looksAtAPath());
    if (order == "eat")
        return tell(eatsWithoutEnd(MAP_PRIVATE));
    if (order == "eat shared")
        return tell(eatsWithoutEnd(MAP_SHARED));
    if (order == "memory of a descriptor")
        return tell(memfd_create("more", MFD_CLOEXEC) >= 0);
    if (order == "hoarded")
        return tell(stillHasTheHoard());
    if (order == "descriptor")
        return tell(fcntl(file, F_DUPFD, 0) >= 0);
    if (order == "threads")
        return tell(startsThreads(100) == 100);
    if (order == "clone")
        return tell(clonesAThread());
    if (order == "spin")
        runWithoutEnd();
}

void misbehave(std::string_view order, int file) {
    if (order == "die")
        std::abort();
    if (order == "flood")
        return flood();
    if (order == "too much")
        return answerTooMuch();
    if (order == "no picture")
        return answer(pictureOf(8, 8));
    if (order == "short picture")
        return roomFor(8, 8), answer(pictureOf(800, 800));
    if (order == "huge picture")
        return answerPicture(65'500, 65'500);
    if (order == "empty picture")
        return answerPicture(0, 8);
    if (order == "two pictures")
        return roomFor(8, 8), answerPicture(8, 8);
    if (order == "descriptor for a picture")
        return roomFor(8, 8), answer(pictureOf(8, 8), file);
    if (order == "two descriptors")
        return sendTwoDescriptors(file);
    if (order == "hoard")
        return hoard();
    if (order == "unknown outcome")
        return answer(Answer{kAnswerMark, static_cast<Outcome>(99), 1, 1});
    if (order == "wrong mark")
        return answer(Answer{kRequestMark, Outcome::done, 1, 1});
    if (order == "behave")
        return answerPicture(8, 8);
}

} // namespace

int main() {
    limitResources();
    if (!enterSandbox() || !sendPacket(kWorkerSocket, &kHelloMark, sizeof kHelloMark, -1))
        return 1;
    for (;;) {
        Request request{};
        local::UniqueFd file;
        if (receivePacket(kWorkerSocket, &request, sizeof request, file) <= 0)
            return 0;
        std::array<char, 64> text{};
        const ssize_t length = pread(file.get(), text.data(), text.size(), 0);
        const std::string_view order(text.data(),
                                     static_cast<std::size_t>(std::max(length, ssize_t{0})));
        attempt(order, file.get());
        misbehave(order, file.get());
    }
}
