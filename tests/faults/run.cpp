#include "tests/faults/run.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <sstream>

namespace faults {

namespace {

// What the processes of a run tell their parent.
struct Shared {
    Trace trace;
    char answer[128];
    char description[1 << 18];
};

Shared& shared() {
    static Shared* const memory = new (mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE,
                                            MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Shared{};
    return *memory;
}

void tell(auto& memory, const std::string& text) {
    memory[text.copy(memory, sizeof memory - 1)] = '\0';
}

// How it differs from the new state.
std::string difference(const Trial& trial, const std::string& description) {
    const std::string& wanted = trial.states.back();
    const std::string found = withoutNewIdentifiers(description, trial.states.front());
    std::istringstream both(found + wanted);
    std::string text;
    for (std::string line; std::getline(both, line);) {
        const bool isWanted = wanted.find(line + "\n") != std::string::npos;
        if (!isWanted || found.find(line + "\n") == std::string::npos)
            text += (isWanted ? "\n      - " : "\n      + ") + line;
    }
    return text;
}

void copyHome(const fs::path& from, const fs::path& to) {
    fs::remove_all(to);
    fs::copy(from, to, fs::copy_options::recursive);
}

// In a process of the run's own.
void runMethod(const Method& method, const Plan& plan) {
    if (method.opensFirst)
        describe(false);
    watch(watched());
    method.before();
    arm(plan, shared().trace);
    std::string answer = method.run();
    disarm();
    if (plan.kind->retries && !method.isSuccess(answer))
        answer = method.run();
    tell(shared().answer, answer);
    if (plan.kind->dies())
        endByPlan();
    // The process must be able to go on.
    tell(shared().description, describe(method.damaged));
}

pid_t start(const std::function<void()>& body) {
    const pid_t child = fork();
    if (child != 0)
        return child;
    alarm(20);                              // seconds; a run takes some hundredths
    std::freopen("/dev/null", "w", stderr); // the log of the core
    body();
    _exit(0);
}

// What `body` does in a process of its own, as waitpid tells it.
int inProcess(const std::function<void()>& body) {
    shared().description[0] = shared().answer[0] = '\0';
    int status = -1;
    waitpid(start(body), &status, 0);
    return status;
}

// A process that opens the library and stands still, until it is killed.
pid_t startNeighbour() {
    const pid_t neighbour = start([] {
        describe(false);
        raise(SIGSTOP);
    });
    waitpid(neighbour, nullptr, WUNTRACED);
    return neighbour;
}

// By a process that opens the library anew; empty when that dies.
std::string describeFresh() {
    inProcess([] { tell(shared().description, describe(true)); });
    return shared().description;
}

// Nothing may go wrong where nothing is made to.
std::string describeAfter(const Trial& trial, const std::function<void()>& action) {
    copyHome(trial.original, home());
    const int status = inProcess(action);
    std::string description = describeFresh();
    if (status != 0 || !(isWhole(description) || trial.method.damaged))
        throw std::logic_error(trial.method.name + " without any fault:\n" + description);
    return description;
}

void judge(const Trial& trial, const Plan& plan, int status, Outcome& outcome) {
    const Method& method = trial.method;
    const Kind& kind = *plan.kind;
    const auto complain = [&](const std::string& text) { outcome.bad.push_back(text); };
    if (status != (kind.dies() ? SIGKILL : 0))
        complain("ended with status " + std::to_string(status));
    if (kind.retries && !outcome.success)
        complain("called again, it fails without a fault");

    const bool isPartial = method.partialSuccess && outcome.trace.fired;
    const bool reachesNew = outcome.success && method.mustReachNew && !isPartial;
    const auto fits = [&](std::size_t state) {
        return reachesNew ? state == trial.newest() : state <= trial.newest();
    };
    std::string identifier(shared().answer, method.wanted.empty() && outcome.success ? 36 : 0);
    std::erase(identifier, '-');
    const std::string here = shared().description;
    if (!kind.dies() && !fits(trial.stateOf(here)))
        complain("in the same process:" + difference(trial, here));

    const std::string after = describeFresh();
    outcome.state = trial.stateOf(after);
    // Several transactions, some of them made twice, leave what they leave, but whole.
    const bool isSingle = trial.states.size() == 2;
    if (kind.retries && !isSingle ? !isWhole(after) : !fits(outcome.state))
        complain("afterwards:" + difference(trial, after));
    // Where the disk works again, and a commit could be taken back.
    const bool tells = kind.isOver() && method.mustReachNew && !method.mayFailLate && isSingle;
    if (tells && outcome.answered && !outcome.success && trial.changes() && outcome.state == 1)
        complain("it is in force although a failure was reported");
    if (after.find(identifier) == std::string::npos)
        complain("the identifier that was returned is gone: " + identifier);
}

} // namespace

std::size_t Trial::stateOf(const std::string& description) const {
    const std::string comparable = withoutNewIdentifiers(description, states.front());
    const auto found = std::find(states.rbegin(), states.rend(), comparable);
    return found == states.rend() ? states.size()
                                  : static_cast<std::size_t>(states.rend() - found - 1);
}

Trial prepare(const Method& method) {
    Trial trial{method, besideHome("original")};
    fs::create_directories(home() / asideFolder);
    inProcess(method.prepare);
    fs::rename(home(), trial.original);

    const std::string old = describeAfter(trial, [] {});
    trial.states.push_back(old);
    auto actions = method.between;
    actions.emplace_back([&] { method.isSuccess(method.run()) ? void() : std::abort(); });
    for (const auto& action : actions)
        trial.states.push_back(withoutNewIdentifiers(describeAfter(trial, action), old));
    return trial;
}

Outcome run(const Trial& trial, const Plan& plan, const fs::path& left) {
    const Method& method = trial.method;
    copyHome(trial.original, home());
    shared().trace = {};
    const pid_t neighbour = plan.kind->beside ? startNeighbour() : 0;
    const int status = inProcess([&] { runMethod(method, plan); });
    const bool answered = shared().answer[0] != '\0';
    Outcome outcome{.answered = answered,
                    .success = answered && method.isSuccess(shared().answer),
                    .trace = shared().trace};
    if (!left.empty())
        copyHome(home(), left);
    judge(trial, plan, status, outcome);
    if (neighbour == 0)
        return outcome;
    // Now nobody has the library open. What a process saw may have been the old state, and the
    // commit be found in the log only now; but nothing that it needs may be gone.
    kill(neighbour, SIGKILL);
    waitpid(neighbour, nullptr, 0);
    const std::string last = describeFresh();
    if (trial.stateOf(last) > trial.newest())
        outcome.bad.push_back("in the end:" + difference(trial, last));
    return outcome;
}

} // namespace faults
