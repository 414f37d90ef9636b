// A test of the sandbox from inside.
#include "platform/local/imaging/worker/sandbox.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace local::imaging {

namespace {

struct Attempt {
    const char* name;
    bool (*succeeds)();
};

bool openFile() {
    return open("/etc/passwd", O_RDONLY) >= 0;
}
bool createFile() {
    return open("/tmp/photos-kit-probe", O_WRONLY | O_CREAT, 0600) >= 0;
}
bool openSocket() {
    return socket(AF_INET, SOCK_STREAM, 0) >= 0;
}
bool pairSockets() {
    std::array<int, 2> pair{};
    return socketpair(AF_UNIX, SOCK_STREAM, 0, pair.data()) == 0;
}
bool startProcess() {
    const pid_t child = fork();
    if (child == 0)
        _exit(0);
    return child > 0;
}
bool runProgram() {
    char name[] = "/bin/true";
    char* const arguments[] = {name, nullptr};
    return execve(name, arguments, nullptr) == 0;
}
bool mapCode() {
    return mmap(nullptr, 4096, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1,
                0) != MAP_FAILED;
}
bool signalParent() {
    return kill(getppid(), 0) == 0;
}
bool deleteFile() {
    return unlink("/tmp/photos-kit-probe") == 0;
}

constexpr Attempt kAttempts[] = {
    {"open a file", openFile},     {"create a file", createFile}, {"delete a file", deleteFile},
    {"open a socket", openSocket}, {"pair sockets", pairSockets}, {"start a process", startProcess},
    {"run a program", runProgram}, {"map code", mapCode},         {"signal another", signalParent},
};

constexpr int kNoSandbox = 3;

bool isRefused(const Attempt& attempt) {
    const pid_t child = fork();
    if (child == 0) {
        if (!enterSandbox())
            _exit(kNoSandbox);
        _exit(attempt.succeeds() ? 1 : 0);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return (WIFEXITED(status) && WEXITSTATUS(status) == 0) ||
           (WIFSIGNALED(status) && WTERMSIG(status) == SIGSYS);
}

} // namespace

bool probeSandbox() {
    bool all = true;
    for (const Attempt& attempt : kAttempts) {
        const bool refused = isRefused(attempt);
        std::printf("%s: %s\n", attempt.name, refused ? "refused" : "ALLOWED");
        std::fflush(stdout);
        all = all && refused;
    }
    return all;
}

} // namespace local::imaging
