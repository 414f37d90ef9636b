#include "tests/faults/fault_plan.h"

#include "tests/faults/power_cut.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <unistd.h>
#include <utility>

namespace faults {

namespace {

struct Trait {
    const char* name;
    unsigned befalls; // operations that do one of these
    int error;
    bool lasts; // every later one fails as well
};
constexpr unsigned any = ~0U;
constexpr std::array<Trait, allKinds.size() + 1> traits{{
    {"none", any, 0, false},
    {"io-once", any, EIO, false},
    {"io-on", any, EIO, true},
    {"space-once", needsSpace, ENOSPC, false},
    {"space-on", needsSpace, ENOSPC, true},
    {"short-write", writesBytes, ENOSPC, true},
    {"denied-once", namesPath, EACCES, false},
    {"denied-on", namesPath, EACCES, true},
    {"lock-on", locks, ENOLCK, true},
    {"retry", any, EIO, false},
    {"kill-kept", changes, 0, false},
    {"kill-dropped", changes, 0, false},
    {"kill-torn", changes, 0, false},
    {"kill-beside", changes, 0, false},
}};

const Trait& traitOf(Kind kind) {
    return traits[static_cast<std::size_t>(kind)];
}

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

// 0, or the errno to fail with.
int errorAt(State& now, const char* function, const std::string& path, unsigned does) {
    const Kind kind = now.plan.kind;
    const Trait& trait = traitOf(kind);
    if ((does & trait.befalls) == 0) // a disk that is full is full for all
        return kind == Kind::shortWrite && now.trace->fired && (does & needsSpace) ? ENOSPC : 0;
    const std::uint64_t number = ++now.trace->counted;
    if (kind == Kind::none || number < now.plan.point)
        return 0;
    if (number > now.plan.point)
        return trait.lasts ? trait.error : 0;
    now.trace->fired = true;
    std::snprintf(now.trace->operation, sizeof now.trace->operation, "%s %s", function,
                  path.substr(std::min(path.size(), now.folder.size())).c_str());
    if (kills(kind))
        endByPlan();
    now.halveNext = kind == Kind::shortWrite;
    return now.halveNext ? 0 : trait.error;
}

} // namespace

std::string nameOf(Kind kind) {
    return traitOf(kind).name;
}

bool kills(Kind kind) {
    return kind >= Kind::killKept;
}

std::recursive_mutex& oneAtATime() {
    return state().mutex;
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
    now.owner = 0; // what is put back is not watched
    if (now.plan.kind == Kind::killDropped || now.plan.kind == Kind::retry)
        powerCut().drop();
    if (now.plan.kind == Kind::killTorn)
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

bool fails(const char* function, const std::string& path, unsigned does) {
    State& now = state();
    const std::scoped_lock lock(now.mutex);
    const int error = now.faulty && watches(path) ? errorAt(now, function, path, does) : 0;
    if (error != 0)
        errno = error;
    return error != 0;
}

std::size_t lengthToWrite(std::size_t size) {
    State& now = state();
    const std::scoped_lock lock(now.mutex);
    return std::exchange(now.halveNext, false) && size >= 2 ? size / 2 : size;
}

} // namespace faults
