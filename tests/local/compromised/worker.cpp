// Stands where the host expects photos-kit-imaging: one that a file has taken over. It enters the
// real sandbox and then does what the file it is asked about says: it tries what a worker must not
// be able to do, or answers what no worker should.
//
// What it got its way with comes back as an inspected photo, what was refused as no picture.
#include "platform/local/imaging/wire/packet.h"
#include "platform/local/imaging/wire/protocol.h"
#include "platform/local/imaging/worker/sandbox.h"

#include <algorithm>
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

namespace {

void say(const void* words, std::size_t size, int file = -1) {
    if (!sendPacket(kWorkerSocket, words, size, file))
        std::_Exit(1);
}

void answer(const Answer& words, int file = -1) {
    say(&words, sizeof words, file);
}

void tell(bool allowed) {
    answer(Answer{kAnswerMark, allowed ? Outcome::done : Outcome::notAPicture, 1, 1});
}

Answer pictureOf(std::uint32_t width, std::uint32_t height) {
    return Answer{kAnswerMark, Outcome::done, width, height, width, height};
}

local::UniqueFd roomFor(std::uint32_t width, std::uint32_t height) {
    const PictureSize words{kPictureMark, width, height};
    say(&words, sizeof words);
    std::uint32_t mark = 0;
    local::UniqueFd room;
    if (receivePacket(kWorkerSocket, &mark, sizeof mark, room) != sizeof mark || !room)
        std::_Exit(1);
    return room;
}

void answerPicture(std::uint32_t width, std::uint32_t height) {
    const local::UniqueFd room = roomFor(width, height);
    answer(pictureOf(width, height));
}

// What it was given, kept from request to request.
int g_hoarded = -1;

bool stillHasTheHoard() {
    struct stat status = {};
    return syscall(SYS_fstat, g_hoarded, &status) != 0 || status.st_size > 0;
}

bool looksAtAPath() {
    struct stat status = {};
    return syscall(SYS_newfstatat, AT_FDCWD, "/etc/passwd", &status, AT_EMPTY_PATH) == 0;
}

bool writes(int file) {
    const std::string path = "/proc/self/fd/" + std::to_string(file);
    return pwrite(file, "x", 1, 0) == 1 || open(path.c_str(), O_RDWR) >= 0;
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

bool readsTheHostsMemory() {
    int here = 0;
    int there = 0;
    const iovec to{&here, sizeof here};
    const iovec from{&there, sizeof there};
    return process_vm_readv(getppid(), &to, 1, &from, 1, 0) >= 0 || errno == EFAULT;
}

bool takesMoreProcessorTime() {
    const rlimit more{100'000, RLIM_INFINITY};
    return setrlimit(RLIMIT_CPU, &more) == 0;
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

bool startsAHundredThreads() {
    pthread_t thread{};
    int started = 0;
    while (started < 100 && pthread_create(&thread, nullptr, sleepForGood, nullptr) == 0)
        ++started;
    return started == 100;
}

void sendTwoDescriptors(int file) {
    Answer words = pictureOf(8, 8);
    iovec part{&words, sizeof words};
    const std::array<int, 2> files{file, file};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof files)> control{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    *header = {CMSG_LEN(sizeof files), SOL_SOCKET, SCM_RIGHTS};
    std::memcpy(CMSG_DATA(header), files.data(), sizeof files);
    if (sendmsg(kWorkerSocket, &message, MSG_NOSIGNAL) < 0)
        std::_Exit(1);
}

struct Order {
    std::string_view words;
    void (*obey)(int file);
};
char program[] = "/bin/true";
char* const arguments[] = {program, nullptr};
constexpr Order orders[]{
    // What it tries.
    {"open", [](int) { tell(open("/etc/passwd", O_RDONLY) >= 0); }},
    {"create",
     [](int) { tell(open("/tmp/photos-kit-taken-over", O_WRONLY | O_CREAT, 0600) >= 0); }},
    {"write", [](int file) { tell(writes(file)); }},
    {"truncate", [](int file) { tell(ftruncate(file, 0) == 0); }},
    {"look", [](int) { tell(looksAtAPath()); }},
    {"connect", [](int) { tell(connects()); }},
    {"exec", [](int) { tell(execve(program, arguments, nullptr) == 0); }}, // or never tells
    {"fork", [](int) { tell(fork() >= 0); }},
    {"kill", [](int) { tell(kill(getppid(), SIGKILL) == 0); }},
    {"trace", [](int) { tell(ptrace(PTRACE_ATTACH, getppid(), nullptr, nullptr) == 0); }},
    {"peek", [](int) { tell(readsTheHostsMemory()); }},
    {"renew", [](int) { tell(takesMoreProcessorTime()); }},
    {"eat", [](int) { tell(eatsWithoutEnd(MAP_PRIVATE)); }},
    {"eat shared", [](int) { tell(eatsWithoutEnd(MAP_SHARED)); }},
    {"memory of a descriptor", [](int) { tell(memfd_create("more", MFD_CLOEXEC) >= 0); }},
    {"hoarded", [](int) { tell(stillHasTheHoard()); }},
    {"descriptor", [](int file) { tell(fcntl(file, F_DUPFD, 0) >= 0); }},
    {"threads", [](int) { tell(startsAHundredThreads()); }},
    // What it does and answers.
    {"behave", [](int) { answerPicture(8, 8); }},
    {"hoard",
     [](int) { g_hoarded = roomFor(1000, 1000).release(), answer(pictureOf(1000, 1000)); }},
    {"spin",
     [](int) {
         for (;;)
             isWornOut();
     }},
    {"die", [](int) { std::abort(); }},
    {"flood",
     [](int) {
         for (int i = 0; i < 100; ++i)
             ::send(kWorkerSocket, "nonsense", 8, MSG_NOSIGNAL | MSG_DONTWAIT);
     }},
    {"too much", [](int) { say(std::array<char, 4096>{}.data(), 4096); }},
    {"no picture", [](int) { answer(pictureOf(8, 8)); }},
    {"short picture", [](int) { roomFor(8, 8), answer(pictureOf(800, 800)); }},
    {"huge picture", [](int) { answerPicture(65'500, 65'500); }},
    {"empty picture", [](int) { answerPicture(0, 8); }},
    {"two pictures", [](int) { roomFor(8, 8), answerPicture(8, 8); }},
    {"descriptor for a picture", [](int file) { roomFor(8, 8), answer(pictureOf(8, 8), file); }},
    {"two descriptors", sendTwoDescriptors},
};

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
        const std::string_view words(text.data(),
                                     length > 0 ? static_cast<std::size_t>(length) : 0);
        const auto* order = std::ranges::find(orders, words, &Order::words);
        if (order != std::end(orders))
            order->obey(file.get());
        else
            tell(true); // so that a test with a slip in its words fails
    }
}
