#include "tests/photokit/script.h"

#include <algorithm>
#include <atomic>
#include <stdexcept>

namespace standin {

namespace {

struct State {
    Script script;
    std::vector<std::string> notes;
    std::vector<std::thread> threads;
    std::set<int> cancelled;
};

// Never destroyed: the JVM ends the process while objects are alive.
State& state() {
    static State& only = *new State;
    return only;
}

std::condition_variable& cancellation() {
    static std::condition_variable& only = *new std::condition_variable;
    return only;
}

std::atomic<long> g_living = 0;

} // namespace

Asset& Script::asset(const std::string& id) {
    for (Asset& candidate : assets) {
        if (candidate.id == id)
            return candidate;
    }
    throw std::out_of_range(id);
}

Collection* Script::collection(const std::string& id) {
    const auto found =
        std::find_if(collections.begin(), collections.end(),
                     [&](const Collection& candidate) { return candidate.id == id; });
    return found == collections.end() ? nullptr : &*found;
}

Script& script() {
    return state().script;
}

std::mutex& mutex() {
    static std::mutex& only = *new std::mutex;
    return only;
}

void reset() {
    std::vector<std::thread> threads;
    {
        const std::lock_guard lock(mutex());
        threads.swap(state().threads);
    }
    for (std::thread& thread : threads)
        thread.join();
    const std::lock_guard lock(mutex());
    state().script = Script();
    state().notes.clear();
    state().cancelled.clear();
}

std::vector<std::string> notes() {
    const std::lock_guard lock(mutex());
    return state().notes;
}

void note(const std::string& line) {
    const std::lock_guard lock(mutex());
    state().notes.push_back(line);
}

long livingObjects() {
    return g_living;
}

void countObject(int change) {
    g_living += change;
}

void answer(std::function<void()> work) {
    if (script().answersBeforeReturning) {
        work();
        return;
    }
    const std::lock_guard lock(mutex());
    state().threads.emplace_back(std::move(work));
}

bool isCancelled(int request) {
    const std::lock_guard lock(mutex());
    return state().cancelled.contains(request);
}

void cancel(int request) {
    const std::lock_guard lock(mutex());
    state().cancelled.insert(request);
    cancellation().notify_all();
}

void waitForCancellation(int request) {
    std::unique_lock lock(mutex());
    cancellation().wait(lock, [&] { return state().cancelled.contains(request); });
}

} // namespace standin
