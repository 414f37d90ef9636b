#include "tests/faults/fault_plan.h"

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

// Made at the first operation, which is before main.
State& now() {
    static State* const state = new State;
    return *state;
}

// 0, or the errno to fail with.
int errorAt(const Operation& operation, const std::string& path) {
    const Kind& kind = *now().plan.kind;
    Trace& trace = *now().trace;
    const auto isAmong = [&](unsigned befalls) { return (operation.does & befalls) != 0; };
    if (trace.fired) // a disk that is full is so for all
        return isAmong(kind.later == ENOSPC ? needsSpace : kind.befalls) ? kind.later : 0;
    for (const Kind& each : kinds)
        trace.counted[&each - kinds] += isAmong(each.befalls) ? 1 : 0;
    if (!isAmong(kind.befalls) || trace.counted[&kind - kinds] != now().plan.point)
        return 0;
    trace.fired = true;
    std::snprintf(trace.operation, sizeof trace.operation, "%s %s", operation.name, path.c_str());
    if (kind.kills())
        endByPlan();
    return kind.error;
}

} // namespace

std::recursive_mutex& oneAtATime() {
    return now().mutex;
}

void watch(const std::string& folder) {
    now().folder = folder;
    now().owner = getpid();
}

void arm(const Plan& plan, Trace& trace) {
    now().plan = plan;
    now().trace = &trace;
}

void disarm() {
    const std::scoped_lock lock(now().mutex);
    now().trace = nullptr;
}

void endByPlan() {
    now().mutex.lock(); // for ever: no other thread changes a file any more
    now().owner = 0;    // what is put back is not watched
    failPower(now().plan.kind->loss, now().plan.seed);
    kill(getpid(), SIGKILL);
    for (;;)
        pause();
}

bool watches(std::string_view path) {
    if (now().owner != getpid())
        return false;
    if (!path.starts_with(now().folder)) // the folder above it holds its name
        return path == std::string_view(now().folder).substr(0, now().folder.find_last_of('/'));
    return path.size() == now().folder.size() || path[now().folder.size()] == '/';
}

bool fails(const Operation& operation, const std::string& path) {
    const std::scoped_lock lock(now().mutex);
    const int error = now().trace && watches(path) ? errorAt(operation, path) : 0;
    if (error != 0)
        errno = error;
    return error != 0;
}

} // namespace faults
