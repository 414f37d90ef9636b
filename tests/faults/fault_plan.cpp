#include "tests/faults/fault_plan.h"

#include "tests/faults/power_cut.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <mutex>
#include <unistd.h>
#include <utility>

namespace faults {

namespace {

struct State {
    std::recursive_mutex mutex;
    Plan plan;
    std::string folder;
    Trace* trace = nullptr;
    pid_t owner = 0;
    bool faulty = false;
    bool halveNext = false;
};

State& state() {
    static State* const shared = new State;
    return *shared;
}

} // namespace

std::recursive_mutex& oneAtATime() {
    return state().mutex;
}

namespace {

bool befalls(Kind kind, unsigned does) {
    switch (kind) {
    case Kind::none:
    case Kind::ioOnce:
    case Kind::ioOn:
    case Kind::retry:
        return true;
    case Kind::lockOn:
        return (does & locks) != 0;
    case Kind::spaceOnce:
    case Kind::spaceOn:
        return (does & needsSpace) != 0;
    case Kind::shortWrite:
        return (does & writesBytes) != 0;
    case Kind::deniedOnce:
    case Kind::deniedOn:
        return (does & namesPath) != 0;
    case Kind::killKept:
    case Kind::killDropped:
    case Kind::killTorn:
    case Kind::killBeside:
        return (does & changes) != 0;
    }
    return false;
}

bool lasts(Kind kind) {
    return kind == Kind::ioOn || kind == Kind::lockOn || kind == Kind::spaceOn ||
           kind == Kind::deniedOn;
}

int errorOf(Kind kind) {
    switch (kind) {
    case Kind::spaceOnce:
    case Kind::spaceOn:
    case Kind::shortWrite:
        return ENOSPC;
    case Kind::deniedOnce:
    case Kind::deniedOn:
        return EACCES;
    case Kind::lockOn:
        return ENOLCK;
    default:
        return EIO;
    }
}

void countCall(Trace& trace, const char* function) {
    for (auto& entry : trace.calls) {
        if (!*entry.function)
            std::strncpy(entry.function, function, sizeof entry.function - 1);
        if (std::strcmp(entry.function, function) != 0)
            continue;
        ++entry.calls;
        return;
    }
}

void noteFirst(State& now, const char* function, std::string_view path) {
    now.trace->fired = true;
    std::strncpy(now.trace->function, function, sizeof now.trace->function - 1);
    const std::string inside(path.substr(std::min(path.size(), now.folder.size())));
    std::strncpy(now.trace->path, inside.c_str(), sizeof now.trace->path - 1);
}

} // namespace

std::string_view nameOf(Kind kind) {
    constexpr std::array<std::string_view, allKinds.size() + 1> names{
        "none",        "io-once",      "io-on",     "space-once", "space-on",
        "short-write", "denied-once",  "denied-on", "lock-on",    "retry",
        "kill-kept",   "kill-dropped", "kill-torn", "kill-beside"};
    return names[static_cast<std::size_t>(kind)];
}

bool kills(Kind kind) {
    return kind == Kind::killKept || kind == Kind::killDropped || kind == Kind::killTorn ||
           kind == Kind::killBeside;
}

void arm(const Plan& plan, const std::string& folder, const std::string& shadow, Trace& trace) {
    State& now = state();
    now.plan = plan;
    now.folder = folder;
    now.trace = &trace;
    now.owner = getpid();
    now.faulty = true;
    powerCut().begin(folder, shadow);
}

void disarm() {
    const std::scoped_lock lock(state().mutex);
    state().faulty = false;
}

void endByPlan() {
    State& now = state();
    now.mutex.lock(); // for ever: no other thread changes a file any more
    now.faulty = false;
    const Kind kind = now.plan.kind;
    if (kind == Kind::killDropped || kind == Kind::retry)
        powerCut().drop();
    if (kind == Kind::killTorn)
        powerCut().tear(now.plan.seed);
    kill(getpid(), SIGKILL);
    for (;;)
        pause();
}

bool watches(std::string_view path) {
    const State& now = state();
    if (now.owner != getpid())
        return false;
    if (!path.starts_with(now.folder)) // the folder above it holds its name
        return path == std::string_view(now.folder).substr(0, now.folder.find_last_of('/'));
    return path.size() == now.folder.size() || path[now.folder.size()] == '/';
}

int before(const char* function, std::string_view path, unsigned does) {
    State& now = state();
    const std::scoped_lock lock(now.mutex);
    if (!now.faulty)
        return 0;
    countCall(*now.trace, function);
    const Kind kind = now.plan.kind;
    if (!befalls(kind, does))
        return kind == Kind::shortWrite && now.trace->fired && (does & needsSpace) ? ENOSPC : 0;
    const std::uint64_t number = ++now.trace->counted;
    if (kind == Kind::none || number < now.plan.point)
        return 0;
    if (number == now.plan.point) {
        noteFirst(now, function, path);
        if (kills(kind))
            endByPlan();
        now.halveNext = kind == Kind::shortWrite;
        return now.halveNext ? 0 : errorOf(kind);
    }
    return lasts(kind) || kind == Kind::shortWrite ? errorOf(kind) : 0;
}

std::size_t lengthToWrite(std::size_t size) {
    State& now = state();
    const std::scoped_lock lock(now.mutex);
    if (!std::exchange(now.halveNext, false) || size < 2)
        return size;
    return size / 2;
}

} // namespace faults
