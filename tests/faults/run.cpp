#include "tests/faults/run.h"

#include "tests/faults/library_state.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <sstream>

namespace faults {

namespace {

constexpr unsigned longestRun = 20; // seconds; a run takes some hundredths

// What the processes of a run tell their parent.
struct Shared {
    Trace trace;
    bool answered;
    char answer[128];
    volatile bool neighbourIsThere;
    char description[1 << 18];
    char bad[1 << 14]; // lines

    void complain(const std::string& text) {
        std::strncat(bad, (text + "\n").c_str(), sizeof bad - std::strlen(bad) - 1);
    }
};

Shared& shared() {
    static Shared* const memory = new (mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE,
                                            MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Shared{};
    return *memory;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

// What a description that fits no state has more and less than the new state.
std::string difference(const Trial& trial, const std::string& description) {
    const auto expected = linesOf(trial.states.back());
    const auto found = linesOf(withoutNewIdentifiers(description, trial.known));
    std::string text = ", beside the new one:";
    for (const std::string& line : found)
        text += std::ranges::count(expected, line) ? "" : "\n      + " + line;
    for (const std::string& line : expected)
        text += std::ranges::count(found, line) ? "" : "\n      - " + line;
    return text;
}

void renew(const fs::path& original) {
    fs::remove_all(home());
    fs::remove_all(besideHome("shadow"));
    fs::create_directories(besideHome("shadow"));
    fs::copy(original, home(), fs::copy_options::recursive);
    // Pictures without a capture date have that of their file.
    for (const auto& entry : fs::directory_iterator(original)) {
        if (entry.is_regular_file())
            fs::last_write_time(home() / entry.path().filename(), entry.last_write_time());
    }
}

// What `body` does in a process of its own, as waitpid tells it.
int inProcess(const std::function<void()>& body) {
    shared().description[0] = shared().bad[0] = '\0';
    shared().answered = false;
    const pid_t child = fork();
    if (child == 0) {
        alarm(longestRun);
        std::freopen("/dev/null", "w", stderr); // the log of the core
        body();
        _exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

// --- within a run's own processes ---

void describe(const Method& method, bool strangers) {
    std::string description;
    try {
        description = describeLibrary() + describeBackup();
        for (const std::string& fault : faultsOfLibrary(strangers)) {
            if (method.damaged)
                description += "found " + fault + "\n";
            else
                shared().complain(fault);
        }
    } catch (const std::exception& error) {
        std::set<fs::path> files; // in order
        for (const auto& entry : fs::recursive_directory_iterator(library()))
            files.insert(entry.path());
        description = std::string("does not open: ") + error.what();
        for (const fs::path& file : files)
            description += "\n" + file.string();
        if (!method.refused)
            shared().complain(std::string("the library does not open: ") + error.what());
    }
    std::strncpy(shared().description, description.c_str(), sizeof shared().description - 1);
}

bool attempt(const Method& method) {
    const std::string answer = method.run();
    std::strncpy(shared().answer, answer.c_str(), sizeof shared().answer - 1);
    shared().answered = true;
    return method.isSuccess(answer);
}

void runMethod(const Method& method, const Plan& plan) {
    if (method.opensFirst)
        describeLibrary();
    shared().trace = {};
    arm(plan, pictures(), besideHome("shadow"), shared().trace);
    const bool succeeded = attempt(method);
    disarm();
    if (plan.kind->retries && !succeeded && !attempt(method) && !method.refused)
        shared().complain("the method, called again, fails without a fault");
    if (plan.kind->kills() || plan.kind->retries)
        endByPlan();
    // The process must be able to go on.
    describe(method, method.damaged);
}

// --- without ---

// A process that opens the library and does nothing, until it is killed.
pid_t startNeighbour(const Method& method) {
    shared().neighbourIsThere = false;
    const pid_t neighbour = fork();
    if (neighbour == 0) {
        alarm(2 * longestRun);
        describe(method, false);
        shared().neighbourIsThere = true;
        for (;;)
            pause();
    }
    while (!shared().neighbourIsThere && kill(neighbour, 0) == 0)
        usleep(200);
    return neighbour;
}

// By a process that opens the library anew.
std::string describeFresh(const Method& method, std::vector<std::string>& bad) {
    const int status = inProcess([&] { describe(method, true); });
    if (status != 0)
        bad.push_back("the next process ended with status " + std::to_string(status));
    std::ranges::move(linesOf(shared().bad), std::back_inserter(bad));
    return shared().description;
}

// Nothing may go wrong where nothing is made to.
void require(bool good, const Method& method, const std::string& what) {
    if (good)
        return;
    std::fprintf(stderr, "%s without any fault: %s\n", method.name.c_str(), what.c_str());
    std::abort();
}

std::string describeAfter(const Trial& trial, const std::function<void()>& action) {
    renew(trial.original);
    require(inProcess(action) == 0, trial.method, "a process ended");
    std::vector<std::string> bad;
    std::string description = describeFresh(trial.method, bad);
    require(bad.empty(), trial.method, bad.empty() ? "" : bad.front());
    return description;
}

// A failure that was reported although the disk works again, and a commit could be taken back.
bool isBelied(const Trial& trial, const Plan& plan, const Outcome& outcome) {
    const Method& method = trial.method;
    return plan.kind->isOver() && method.mustReachNew && !method.mayFailLate && outcome.answered &&
           !outcome.success && trial.states.size() == 2 && trial.changes() && outcome.state == 1;
}

void judge(const Trial& trial, const Plan& plan, int status, Outcome& outcome) {
    const auto complain = [&](const std::string& text) { outcome.bad.push_back(text); };
    const bool kills = plan.kind->kills();
    const bool dies = kills || plan.kind->retries;
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM)
        complain("hangs");
    else if (dies ? !WIFSIGNALED(status) || WTERMSIG(status) != SIGKILL : status != 0)
        complain("ended with status " + std::to_string(status));

    const Method& method = trial.method;
    const bool partial = method.partialSuccess && outcome.trace.fired && !kills;
    const bool reachesNew = outcome.success && method.mustReachNew && !partial;
    const auto fits = [&](std::size_t state) {
        return state <= trial.newest() && (!reachesNew || state == trial.newest());
    };
    const std::string here = shared().description;
    if (!dies && outcome.bad.empty() && !fits(trial.stateOf(here)))
        complain("in the same process" + difference(trial, here));

    const std::string identifier(shared().answer, method.makes() && outcome.success ? 36 : 0);
    const std::string after = describeFresh(method, outcome.bad);
    outcome.state = trial.stateOf(after);
    const bool repeated = plan.kind->retries && trial.states.size() > 2;
    if (!fits(outcome.state) && !repeated)
        complain("state " + std::to_string(outcome.state) + difference(trial, after));
    if (isBelied(trial, plan, outcome))
        complain("it is in force although a failure was reported");
    const auto isGone = [&](const std::string& text) {
        return after.find(text) == std::string::npos;
    };
    if (isGone(identifier))
        complain("the identifier that was returned is gone: " + identifier);
    for (const std::string& known : trial.known) {
        if (trial.states.back().find(known) != std::string::npos && isGone(known))
            complain("an identifier is gone: " + known);
    }
}

} // namespace

std::size_t Trial::stateOf(const std::string& description) const {
    const std::string comparable = withoutNewIdentifiers(description, known);
    const auto found = std::find(states.rbegin(), states.rend(), comparable);
    return found == states.rend() ? states.size()
                                  : static_cast<std::size_t>(states.rend() - found - 1);
}

Trial prepare(const Method& method) {
    Trial trial{method, besideHome("original"), {}};
    fs::remove_all(trial.original);
    fs::remove_all(home());
    fs::create_directories(home());
    const int status = inProcess([&] {
        writePictures();
        method.prepare();
    });
    require(status == 0, method, "its library could not be prepared");
    std::error_code none;
    for (const auto& shelf : fs::directory_iterator(library() / "originals", none)) {
        if (!method.emptyShelves && fs::is_empty(shelf))
            fs::remove(shelf);
    }
    fs::rename(home(), trial.original);

    trial.states = {describeAfter(trial, [] {})};
    trial.known = identifiersIn(trial.states.front());
    auto actions = method.between;
    if (!method.refused)
        actions.emplace_back([&] { method.isSuccess(method.run()) ? void() : std::abort(); });
    for (const auto& action : actions)
        trial.states.push_back(withoutNewIdentifiers(describeAfter(trial, action), trial.known));
    return trial;
}

Outcome run(const Trial& trial, const Plan& plan) {
    const Method& method = trial.method;
    renew(trial.original);
    shared().trace = {};
    const pid_t neighbour = plan.kind->beside && method.opensFirst ? startNeighbour(method) : 0;
    const int status = inProcess([&] { runMethod(method, plan); });
    Outcome outcome{.answered = shared().answered,
                    .success = shared().answered && method.isSuccess(shared().answer),
                    .trace = shared().trace,
                    .bad = linesOf(shared().bad)};
    judge(trial, plan, status, outcome);
    if (neighbour == 0)
        return outcome;
    // Now nobody has the library open. What a process saw may have been the old state, and the
    // commit be found in the log only now; but nothing that it needs may be gone.
    kill(neighbour, SIGKILL);
    waitpid(neighbour, nullptr, 0);
    const std::string last = describeFresh(method, outcome.bad);
    if (trial.stateOf(last) > trial.newest())
        outcome.bad.push_back("in the end" + difference(trial, last));
    return outcome;
}

fs::path leftBy(const Trial& trial, const Plan& plan) {
    renew(trial.original);
    inProcess([&] { runMethod(trial.method, plan); });
    fs::path kept = besideHome("kept");
    fs::remove_all(kept);
    fs::rename(home(), kept);
    return kept;
}

} // namespace faults
