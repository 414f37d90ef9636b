#include "tool/interruption.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <initializer_list>
#include <string_view>

namespace tool {

namespace {

volatile std::sig_atomic_t noted = 0;
bool atTerminal = false; // where a bar may stand in the line

void note(int) {
    constexpr std::string_view clearLine = "\r\x1b[K";
    constexpr std::string_view sentence = "photos-kit: Stopping; once more ends it at once.\n";
    const int error = errno;
    noted = 1;
    if (atTerminal)
        static_cast<void>(!write(STDERR_FILENO, clearLine.data(), clearLine.size()));
    static_cast<void>(!write(STDERR_FILENO, sentence.data(), sentence.size()));
    errno = error;
}

} // namespace

void noteInterruptions() {
    atTerminal = isatty(STDERR_FILENO) != 0;
    struct sigaction action = {};
    action.sa_handler = note;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before = {};
        sigaction(signal, &action, &before);
        if (before.sa_handler == SIG_IGN) // nohup, or a job in the background
            sigaction(signal, &before, nullptr);
    }
}

bool interrupted() {
    return noted != 0;
}

} // namespace tool
