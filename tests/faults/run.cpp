#include "tests/faults/run.h"

#include "tests/faults/library_state.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/local/system/library_error.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace faults {

namespace fs = std::filesystem;

namespace {

constexpr unsigned longestRun = 20; // seconds; a run takes some hundredths

void removeEmptyShelves(const fs::path& originals) {
    if (!fs::exists(originals))
        return;
    for (const auto& shelf : fs::directory_iterator(originals)) {
        if (fs::is_empty(shelf))
            fs::remove(shelf);
    }
}

std::string namesBelow(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        names.insert(entry.path().string());
    std::string text;
    for (const std::string& name : names)
        text += "\n" + name;
    return text;
}

std::set<std::string> linesOf(const std::string& text) {
    std::set<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.insert(line);
    return lines;
}

// What a description that fits no state has more and less than the new state.
std::string difference(const States& states, const std::string& description) {
    const auto expected = linesOf(states.descriptions.back());
    const auto found = linesOf(withoutNewIdentifiers(description, states.known));
    std::string text;
    for (const std::string& line : found)
        text += expected.contains(line) ? "" : "\n      + " + line;
    for (const std::string& line : expected)
        text += found.contains(line) ? "" : "\n      - " + line;
    return text;
}

} // namespace

// What a run's process tells its parent.
struct Workplace::Shared {
    Trace trace;
    Outcome::Reported reported;
    char identifier[64];
    volatile bool neighbourIsThere;
    char description[1 << 18];
    char bad[1 << 14];

    void tell(const std::string& text) {
        std::strncpy(description, text.c_str(), sizeof description - 1);
    }
    void complain(const std::string& text) {
        std::strncat(bad, (text + "\n").c_str(), sizeof bad - std::strlen(bad) - 1);
    }
};

std::size_t States::indexOf(const std::string& description) const {
    const std::string comparable = withoutNewIdentifiers(description, known);
    for (std::size_t i = descriptions.size(); i-- > 0;) {
        if (descriptions[i] == comparable)
            return i;
    }
    return descriptions.size();
}

Workplace::Workplace(fs::path folder) : folder_(std::move(folder)) {
    fs::create_directories(folder_);
    folder_ = fs::canonical(folder_);
    void* const memory =
        mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    shared_ = new (memory) Shared{};
}

Workplace::~Workplace() {
    munmap(shared_, sizeof(Shared));
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

void Workplace::renew(const fs::path& original) {
    fs::remove_all(folder_ / "run");
    fs::create_directories(folder_ / "run" / "shadow");
    if (original.empty())
        return;
    fs::copy(original, place().home, fs::copy_options::recursive);
    // Pictures without a capture date have that of their file.
    for (const auto& entry : fs::directory_iterator(original)) {
        if (entry.is_regular_file())
            fs::last_write_time(place().home / entry.path().filename(), entry.last_write_time());
    }
}

fs::path Workplace::leftBy(const Trial& trial, const Plan& plan) {
    renew(trial.original);
    shared_->trace = {};
    inProcess([&] { runMethod(trial, plan); });
    fs::path kept = folder_ / "kept";
    fs::remove_all(kept);
    fs::rename(place().home, kept);
    return kept;
}

int Workplace::inProcess(const std::function<void()>& body) {
    shared_->description[0] = shared_->bad[0] = shared_->identifier[0] = '\0';
    shared_->reported = Outcome::Reported::nothing;
    const pid_t child = fork();
    if (child == 0) {
        alarm(longestRun);
        setenv("HOME", place().home.c_str(), 1);
        setenv("TZ", "UTC", 1);
        if (const int nothing = ::open("/dev/null", O_WRONLY | O_CLOEXEC); nothing >= 0)
            dup2(nothing, STDERR_FILENO); // the log of the core
        body();
        _exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

// Within a run's own process.
void Workplace::describe(const Trial& trial, bool strangers) {
    try {
        std::string description = describeLibrary() + describeBackup(place().backup());
        for (const std::string& fault : faultsOfLibrary(place().library(), strangers)) {
            if (trial.damaged)
                description.append("found ").append(fault).append("\n");
            else
                shared_->complain(fault);
        }
        shared_->tell(description);
    } catch (const std::exception& error) {
        shared_->tell(std::string("does not open: ") + error.what() +
                      namesBelow(place().library()));
        if (!trial.refused)
            shared_->complain(std::string("the library does not open: ") + error.what());
    }
}

// By a process that opens the library anew.
std::string Workplace::describeFresh(const Trial& trial, std::vector<std::string>& bad) {
    const int status = inProcess([&] { describe(trial, true); });
    if (status != 0)
        bad.push_back("the next process ended with status " + std::to_string(status));
    std::istringstream lines(shared_->bad);
    for (std::string line; std::getline(lines, line);)
        bad.push_back(line);
    return shared_->description;
}

std::string Workplace::describeAfter(const Trial& trial,
                                     const std::function<void(const Names&)>& action) {
    renew(trial.original);
    inProcess([&] { action(trial.names); });
    std::vector<std::string> bad;
    std::string description = describeFresh(trial, bad);
    for (const std::string& fault : bad)
        std::fprintf(stderr, "without any fault: %s\n", fault.c_str());
    if (!bad.empty())
        std::abort();
    return description;
}

Trial Workplace::prepare(const Method& method) {
    renew({});
    inProcess([&] {
        writePictures(place());
        std::string text;
        for (const auto& [name, identifier] : method.prepare())
            text.append(name).append("=").append(identifier).append("\n");
        shared_->tell(text);
    });
    Trial trial{.run = method.run, .opensFirst = method.opensFirst};
    trial.partialSuccess = method.partialSuccess;
    trial.refused = method.refused;
    trial.damaged = method.damaged;
    std::istringstream lines(shared_->description);
    for (std::string name, identifier;
         std::getline(lines, name, '=') && std::getline(lines, identifier);)
        trial.names[name] = identifier;
    if (!method.emptyShelves)
        removeEmptyShelves(place().library() / "originals");
    trial.original = folder_ / "original";
    fs::remove_all(trial.original);
    fs::rename(place().home, trial.original);

    const std::string old = describeAfter(trial, [](const Names&) {});
    trial.states.known = identifiersIn(old);
    trial.states.descriptions.push_back(old);
    const auto add = [&](const std::function<void(const Names&)>& action) {
        trial.states.descriptions.push_back(
            withoutNewIdentifiers(describeAfter(trial, action), trial.states.known));
    };
    for (const auto& action : method.between)
        add(action);
    if (method.refused)
        return trial;
    add([&](const Names& names) {
        if (!method.run(names).success)
            std::abort();
    });
    return trial;
}

// A process that opens the library and does nothing, until it is killed.
pid_t Workplace::startNeighbour(const Trial& trial) {
    shared_->neighbourIsThere = false;
    const pid_t neighbour = fork();
    if (neighbour == 0) {
        alarm(2 * longestRun);
        setenv("HOME", place().home.c_str(), 1);
        describe(trial, false);
        shared_->neighbourIsThere = true;
        for (;;)
            pause();
    }
    while (!shared_->neighbourIsThere && kill(neighbour, 0) == 0)
        usleep(200);
    return neighbour;
}

// Within the run's own process.
void Workplace::runMethod(const Trial& trial, const Plan& plan) {
    if (trial.opensFirst)
        static_cast<void>(describeLibrary());
    arm(plan, place().pictures().string(), (folder_ / "run" / "shadow").string(), shared_->trace);
    const auto attempt = [&] {
        const Report report = trial.run(trial.names);
        shared_->reported =
            report.success ? Outcome::Reported::success : Outcome::Reported::failure;
        std::strncpy(shared_->identifier, report.identifier.c_str(), 63);
        return report.success;
    };
    const bool succeeded = attempt();
    disarm();
    if (kills(plan.kind))
        endByPlan();
    if (plan.kind == Kind::retry) {
        if (!succeeded && !attempt() && !trial.refused)
            shared_->complain("the method, called again, fails without a fault");
        endByPlan();
    }
    // The process must be able to go on.
    describe(trial, trial.damaged);
}

Outcome Workplace::run(const Trial& trial, const Plan& plan) {
    renew(trial.original);
    shared_->trace = {};
    const pid_t neighbour =
        plan.kind == Kind::killBeside && trial.opensFirst ? startNeighbour(trial) : 0;
    const int status = inProcess([&] { runMethod(trial, plan); });
    Outcome outcome;
    outcome.reported = shared_->reported;
    outcome.fired = shared_->trace.fired;
    outcome.function = shared_->trace.function;
    outcome.path = shared_->trace.path;
    outcome.operations = shared_->trace.counted;
    for (const auto& entry : shared_->trace.calls) {
        if (entry.calls > 0)
            outcome.calls.push_back(entry);
    }
    std::istringstream lines(shared_->bad);
    for (std::string line; std::getline(lines, line);)
        outcome.bad.push_back(line);
    judge(trial, plan, status, outcome);
    if (neighbour == 0)
        return outcome;
    // Now nobody has the library open. What a process saw may have been the old state, and the
    // commit be found in the log only now; but nothing that it needs may be gone.
    kill(neighbour, SIGKILL);
    waitpid(neighbour, nullptr, 0);
    const std::string last = describeFresh(trial, outcome.bad);
    if (trial.states.indexOf(last) > trial.states.newest())
        outcome.bad.push_back("in the end, beside the new one:" + difference(trial.states, last));
    return outcome;
}

void Workplace::judge(const Trial& trial, const Plan& plan, int status, Outcome& outcome) {
    const bool dies = kills(plan.kind) || plan.kind == Kind::retry;
    const bool killed = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM)
        outcome.bad.push_back("hangs");
    else if (dies ? !killed : status != 0)
        outcome.bad.push_back("ended with status " + std::to_string(status));

    const bool success = outcome.reported == Outcome::Reported::success;
    const std::string identifier = shared_->identifier;
    const std::string here = shared_->description;
    const States& states = trial.states;
    const auto fits = [&](std::size_t state) {
        if (state > states.newest())
            return false;
        const bool partial = trial.partialSuccess && outcome.fired && !kills(plan.kind);
        return !success || !trial.mustReachNew || partial || state == states.newest();
    };
    if (!dies && outcome.bad.empty() && !fits(states.indexOf(here)))
        outcome.bad.push_back("in the same process, state " + std::to_string(states.indexOf(here)) +
                              ", beside the new one:" + difference(states, here));

    const std::string after = describeFresh(trial, outcome.bad);
    outcome.state = states.indexOf(after);
    const bool repeated = plan.kind == Kind::retry && states.descriptions.size() > 2;
    if (!fits(outcome.state) && !repeated)
        outcome.bad.push_back("state " + std::to_string(outcome.state) +
                              ", beside the new one:" + difference(states, after));
    if (success && !identifier.empty() && after.find(identifier.substr(0, 36)) == std::string::npos)
        outcome.bad.push_back("the identifier that was returned is gone: " + identifier);
    for (const std::string& known : states.known) {
        const bool stays = states.descriptions.back().find(known) != std::string::npos;
        if (stays && after.find(known) == std::string::npos)
            outcome.bad.push_back("an identifier is gone: " + known);
    }
}

} // namespace faults
