#include "tests/faults/fault_plan.h"

#include "tests/faults/power_cut.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <unistd.h>

namespace faults {

namespace {

struct State {
    std::recursive_mutex mutex;
    Plan plan;
    std::string folder;
    Trace* trace = nullptr;
    pid_t owner = 0;
    bool faulty = false;
};

State& state() {
    static State* const shared = new State;
    return *shared;
}

// 0, or the errno to fail with.
int errorAt(State& now, const Operation& operation, const std::string& path) {
    const Kind& kind = *now.plan.kind;
    Trace& trace = *now.trace;
    if (trace.fired) {
        const unsigned befalls = kind.later == ENOSPC ? needsSpace : kind.befalls; // full for all
        return (operation.does & befalls) != 0 ? kind.later : 0;
    }
    if ((operation.does & kind.befalls) == 0 || ++trace.counted != now.plan.point)
        return 0;
    trace.fired = true;
    std::snprintf(trace.operation, sizeof trace.operation, "%s %s", operation.name,
                  path.substr(std::min(path.size(), now.folder.size())).c_str());
    if (kind.kills())
        endByPlan();
    return kind.error;
}

} // namespace

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
    now.owner = 0;    // what is put back is not watched
    const Loss loss = now.plan.kind->loss;
    if (loss != Loss::none)
        powerCut().fail(loss == Loss::someUnsynced, now.plan.seed);
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

bool fails(const Operation& operation, const std::string& path) {
    State& now = state();
    const std::scoped_lock lock(now.mutex);
    const int error = now.faulty && watches(path) ? errorAt(now, operation, path) : 0;
    if (error != 0)
        errno = error;
    return error != 0;
}

} // namespace faults
