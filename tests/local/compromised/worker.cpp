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

struct Attempt {
    std::string_view order;
    bool (*isAllowed)(int file);
};
constexpr Attempt attempts[]{
    {"open", [](int) { return open("/etc/passwd", O_RDONLY) >= 0; }},
    {"create",
     [](int) { return open("/tmp/photos-kit-taken-over", O_WRONLY | O_CREAT, 0600) >= 0; }},
    {"write", [](int file) { return pwrite(file, "x", 1, 0) == 1 || reopensForWriting(file); }},
    {"truncate", [](int file) { return ftruncate(file, 0) == 0; }},
    {"connect", [](int) { return connects(); }},
    {"exec", [](int) { return runsAProgram(); }},
    {"fork", [](int) { return fork() >= 0; }},
    {"kill", [](int) { return kill(getppid(), SIGKILL) == 0; }},
    {"trace", [](int) { return ptrace(PTRACE_ATTACH, getppid(), nullptr, nullptr) == 0; }},
    {"peek", [](int) { return readsTheHostsMemory(); }},
    {"renew", [](int) { return takesMoreProcessorTime(); }},
    {"look", [](int) { return looksAtAPath(); }},
    {"eat", [](int) { return eatsWithoutEnd(MAP_PRIVATE); }},
    {"eat shared", [](int) { return eatsWithoutEnd(MAP_SHARED); }},
    {"memory of a descriptor", [](int) { return memfd_create("more", MFD_CLOEXEC) >= 0; }},
    {"hoarded", [](int) { return stillHasTheHoard(); }},
    {"descriptor", [](int file) { return fcntl(file, F_DUPFD, 0) >= 0; }},
    {"threads", [](int) { return startsThreads(100) == 100; }},
    {"clone", [](int) { return clonesAThread(); }},
};

struct Misdeed {
    std::string_view order;
    void (*commit)(int file);
};
constexpr Misdeed misdeeds[]{
    {"spin", [](int) { runWithoutEnd(); }},
    {"die", [](int) { std::abort(); }},
    {"flood", [](int) { flood(); }},
    {"too much", [](int) { answerTooMuch(); }},
    {"no picture", [](int) { answer(pictureOf(8, 8)); }},
    {"short picture", [](int) { roomFor(8, 8), answer(pictureOf(800, 800)); }},
    {"huge picture", [](int) { answerPicture(65'500, 65'500); }},
    {"empty picture", [](int) { answerPicture(0, 8); }},
    {"two pictures", [](int) { roomFor(8, 8), answerPicture(8, 8); }},
    {"descriptor for a picture", [](int file) { roomFor(8, 8), answer(pictureOf(8, 8), file); }},
    {"two descriptors", sendTwoDescriptors},
    {"hoard", [](int) { hoard(); }},
    {"unknown outcome",
     [](int) {
         answer(Answer{kAnswerMark, static_cast<Outcome>(99), 1, 1});
     }},
    {"wrong mark",
     [](int) {
         answer(Answer{kRequestMark, Outcome::done, 1, 1});
     }},
    {"behave", [](int) { answerPicture(8, 8); }},
};

void obey(std::string_view order, int file) {
    for (const Attempt& attempt : attempts) {
        if (attempt.order == order)
            return tell(attempt.isAllowed(file));
    }
    for (const Misdeed& misdeed : misdeeds) {
        if (misdeed.order == order)
            return misdeed.commit(file);
    }
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
        obey({text.data(), static_cast<std::size_t>(std::max(length, ssize_t{0}))}, file.get());
    }
}
