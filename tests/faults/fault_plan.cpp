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
    Trace* trace = nullptr; // null where nothing goes wrong
    std::string folder;
    pid_t owner = 0;
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
    for (const Kind& each : kinds)
        trace.counted[&each - kinds] += (operation.does & each.befalls) != 0 ? 1 : 0;
    if ((operation.does & kind.befalls) == 0 || trace.counted[&kind - kinds] != now.plan.point)
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

void watch(const std::string& folder, const std::string& shadow) {
    state().folder = folder;
    state().owner = getpid();
    beginNoting(shadow);
}

void arm(const Plan& plan, Trace& trace) {
    state().plan = plan;
    state().trace = &trace;
}

void disarm() {
    const std::scoped_lock lock(state().mutex);
    state().trace = nullptr;
}

void endByPlan() {
    State& now = state();
    now.mutex.lock(); // for ever: no other thread changes a file any more
    now.owner = 0;    // what is put back is not watched
    const Loss loss = now.plan.kind->loss;
    if (loss != Loss::none)
        failPower(loss == Loss::someUnsynced, now.plan.seed);
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
    const int error = now.trace && watches(path) ? errorAt(now, operation, path) : 0;
    if (error != 0)
        errno = error;
    return error != 0;
}

} // namespace faults
