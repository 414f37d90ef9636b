#include "tool/interruption.h"

#include <csignal>
#include <initializer_list>

namespace tool {

namespace {

volatile std::sig_atomic_t noted = 0;

void note(int) {
    noted = 1;
}

} // namespace

void noteInterruptions() {
    struct sigaction action {};
    action.sa_handler = note;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before {};
        sigaction(signal, &action, &before);
        if (before.sa_handler == SIG_IGN) // nohup, or a job in the background
            sigaction(signal, &before, nullptr);
    }
}

bool interrupted() {
    return noted != 0;
}

} // namespace tool
