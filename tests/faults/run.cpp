#include "tests/faults/run.h"

#include "platform/local/system/library_error.h"
#include "tests/faults/library_state.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <sstream>

namespace faults {

namespace fs = std::filesystem;

namespace {

constexpr unsigned longestRun = 20; // seconds; a run takes some hundredths

void removeEmptyShelves(const fs::path& originals) {
    std::error_code none;
    for (const auto& shelf : fs::directory_iterator(originals, none)) {
        if (fs::is_empty(shelf))
            fs::remove(shelf);
    }
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
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

// What a description that fits no state has more and less than the new state.
std::string difference(const States& states, const std::string& description) {
    const auto expected = linesOf(states.descriptions.back());
    const auto found = linesOf(withoutNewIdentifiers(description, states.known));
    std::string text;
    for (const std::string& line : found)
        text += std::ranges::count(expected, line) ? "" : "\n      + " + line;
    for (const std::string& line : expected)
        text += std::ranges::count(found, line) ? "" : "\n      - " + line;
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
    const auto found = std::find(descriptions.rbegin(), descriptions.rend(), comparable);
    return found == descriptions.rend() ? descriptions.size()
                                        : static_cast<std::size_t>(descriptions.rend() - found - 1);
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
void Workplace::describe(const Terms& terms, bool strangers) {
    try {
        std::string description = describeLibrary() + describeBackup(place().backup());
        for (const std::string& fault : faultsOfLibrary(place().library(), strangers)) {
            if (terms.damaged)
                description.append("found ").append(fault).append("\n");
            else
                shared_->complain(fault);
        }
        shared_->tell(description);
    } catch (const std::exception& error) {
        shared_->tell(std::string("does not open: ") + error.what() +
                      namesBelow(place().library()));
        if (!terms.refused)
            shared_->complain(std::string("the library does not open: ") + error.what());
    }
}

// By a process that opens the library anew.
std::string Workplace::describeFresh(const Terms& terms, std::vector<std::string>& bad) {
    const int status = inProcess([&] { describe(terms, true); });
    if (status != 0)
        bad.push_back("the next process ended with status " + std::to_string(status));
    std::ranges::move(linesOf(shared_->bad), std::back_inserter(bad));
    return shared_->description;
}

std::string Workplace::describeAfter(const Trial& trial,
                                     const std::function<void(const Names&)>& action) {
    renew(trial.original);
    inProcess([&] { action(trial.names); });
    std::vector<std::string> bad;
    std::string description = describeFresh(trial.terms, bad);
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
    Trial trial{folder_ / "original", method.run, {}, {}, method.terms};
    for (const std::string& line : linesOf(shared_->description))
        trial.names[line.substr(0, line.find('='))] = line.substr(line.find('=') + 1);
    if (!method.terms.emptyShelves)
        removeEmptyShelves(place().library() / "originals");
    fs::remove_all(trial.original);
    fs::rename(place().home, trial.original);

    States& states = trial.states;
    states.descriptions = {describeAfter(trial, [](const Names&) {})};
    states.known = identifiersIn(states.descriptions.front());
    auto actions = method.between;
    if (!method.terms.refused)
        actions.emplace_back([&](const Names& names) {
            if (!method.run(names).success)
                std::abort();
        });
    for (const auto& action : actions)
        states.descriptions.push_back(
            withoutNewIdentifiers(describeAfter(trial, action), states.known));
    return trial;
}

// A process that opens the library and does nothing, until it is killed.
pid_t Workplace::startNeighbour(const Trial& trial) {
    shared_->neighbourIsThere = false;
    const pid_t neighbour = fork();
    if (neighbour == 0) {
        alarm(2 * longestRun);
        setenv("HOME", place().home.c_str(), 1);
        describe(trial.terms, false);
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
    if (trial.terms.opensFirst)
        static_cast<void>(describeLibrary());
    shared_->trace = {};
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
        if (!succeeded && !attempt() && !trial.terms.refused)
            shared_->complain("the method, called again, fails without a fault");
        endByPlan();
    }
    // The process must be able to go on.
    describe(trial.terms, trial.terms.damaged);
}

Outcome Workplace::run(const Trial& trial, const Plan& plan) {
    renew(trial.original);
    shared_->trace = {};
    const pid_t neighbour =
        plan.kind == Kind::killBeside && trial.terms.opensFirst ? startNeighbour(trial) : 0;
    const int status = inProcess([&] { runMethod(trial, plan); });
    Outcome outcome{shared_->reported, shared_->trace, 0, linesOf(shared_->bad)};
    judge(trial, plan, status, outcome);
    if (neighbour == 0)
        return outcome;
    // Now nobody has the library open. What a process saw may have been the old state, and the
    // commit be found in the log only now; but nothing that it needs may be gone.
    kill(neighbour, SIGKILL);
    waitpid(neighbour, nullptr, 0);
    const std::string last = describeFresh(trial.terms, outcome.bad);
    if (trial.states.indexOf(last) > trial.states.newest())
        outcome.bad.push_back("in the end, beside the new one:" + difference(trial.states, last));
    return outcome;
}

void Workplace::judge(const Trial& trial, const Plan& plan, int status, Outcome& outcome) {
    const auto complain = [&](const std::string& text) { outcome.bad.push_back(text); };
    const bool dies = kills(plan.kind) || plan.kind == Kind::retry;
    const bool killed = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM)
        complain("hangs");
    else if (dies ? !killed : status != 0)
        complain("ended with status " + std::to_string(status));

    const bool success = outcome.reported == Outcome::Reported::success;
    const std::string identifier = shared_->identifier;
    const std::string here = shared_->description;
    const States& states = trial.states;
    const bool partial = trial.terms.partialSuccess && outcome.trace.fired && !kills(plan.kind);
    const auto fits = [&](std::size_t state) {
        return state <= states.newest() &&
               (!success || !trial.terms.mustReachNew || partial || state == states.newest());
    };
    if (!dies && outcome.bad.empty() && !fits(states.indexOf(here)))
        complain("in the same process, beside the new one:" + difference(states, here));

    const std::string after = describeFresh(trial.terms, outcome.bad);
    outcome.state = states.indexOf(after);
    const bool repeated = plan.kind == Kind::retry && states.descriptions.size() > 2;
    if (!fits(outcome.state) && !repeated)
        complain("state " + std::to_string(outcome.state) +
                 ", beside the new one:" + difference(states, after));
    // A disk that works again lets a commit be taken back.
    const bool once =
        plan.kind == Kind::ioOnce || plan.kind == Kind::spaceOnce || plan.kind == Kind::deniedOnce;
    if (once && trial.terms.mustReachNew && !trial.terms.mayFailLate &&
        outcome.reported == Outcome::Reported::failure && states.descriptions.size() == 2 &&
        states.descriptions.front() != states.descriptions.back() && outcome.state == 1)
        complain("it is in force although a failure was reported");
    if (success && !identifier.empty() && after.find(identifier.substr(0, 36)) == std::string::npos)
        complain("the identifier that was returned is gone: " + identifier);
    for (const std::string& known : states.known) {
        const bool stays = states.descriptions.back().find(known) != std::string::npos;
        if (stays && after.find(known) == std::string::npos)
            complain("an identifier is gone: " + known);
    }
}

} // namespace faults
