// Lets every file operation of the embedded library fail, and kills the process there, and again
// while the next process recovers; prints what came of it as a table, method by method.
#include "tests/faults/run.h"
#include "tests/support/home.h"

#include <CLI/CLI.hpp>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <span>
#include <thread>

namespace {

using namespace faults;

struct SweepOptions {
    bool brief = false;      // only some points of each kind, and little of the recovery
    std::string kind;        // empty: all
    std::uint64_t point = 0; // 0: all
    std::uint64_t seed = 1;
};

constexpr std::uint64_t mostRecoveries = 3;       // of a method and a kind of kill
constexpr std::uint64_t mostPointsInRecovery = 8; // for each kind of fault
// What goes wrong while the next process recovers; a brief sweep tries the first two.
constexpr std::string_view kindsInRecovery[] = {"io-once",   "kill-dropped", "io-on",    "space-on",
                                                "denied-on", "kill-kept",    "kill-torn"};

class MethodSweep {
public:
    MethodSweep(const Method& method, const SweepOptions& options)
        : options_(options), trial_(prepare(method)) {}

    // False when something bad was found.
    bool sweep() {
        const Trace whole = runAndJudge(trial_, {}).trace;
        for (const Kind& kind : kinds) {
            if (options_.kind.empty() || options_.kind == kind.name)
                sweepKind(kind, whole.counted[&kind - kinds]);
        }
        std::printf("| %s | %lu | %lu | %lu | %lu | %lu | %lu | %lu | %lu |\n",
                    trial_.method.name.c_str(), whole.counted[0], runs_, recoveries_, old_,
                    runs_ - old_ - new_, new_, belied_, bad_);
        return bad_ == 0;
    }

private:
    Outcome runAndJudge(const Trial& trial, const Plan& plan, const std::string& origin = "",
                        const fs::path& left = {}) {
        const Outcome outcome = run(trial, plan, left);
        const bool isNew = outcome.state == trial.newest();
        const bool belied = outcome.answered && !outcome.success && isNew && trial.changes();
        ++runs_;
        recoveries_ += !origin.empty();
        new_ += isNew;
        old_ += !isNew && outcome.state == 0;
        belied_ += belied && origin.empty();
        bad_ += !outcome.bad.empty();
        for (const std::string& fault : outcome.bad)
            std::printf("--only %s --kind %s --point %lu --seed %lu%s: %s: %s\n",
                        trial.method.name.c_str(), plan.kind->name, plan.point, options_.seed,
                        origin.c_str(), outcome.trace.operation, fault.c_str());
        return outcome;
    }

    // What a brief sweep looks at whole: every fault of a small change, and the power failing
    // during those that place and remove files.
    bool isWhole(const Kind& kind) const {
        const std::string& name = trial_.method.name;
        const bool placesAndRemoves = name == "import" || name == "edit-again";
        return !options_.brief || name == "favorite" || (placesAndRemoves && kind.loss == 100);
    }

    void sweepKind(const Kind& kind, std::uint64_t count) {
        // One beyond the end: a process that has answered is killed, too, and a background thread
        // may add to what was counted. A brief sweep takes another point for each method and kind.
        const std::uint64_t end = count + 1;
        const std::size_t any = std::hash<std::string>()(trial_.method.name + kind.name);
        const std::uint64_t first = isWhole(kind) ? 1 : 1 + (any + options_.seed) % end;
        const std::uint64_t step = isWhole(kind) ? 1 : end;
        const std::uint64_t recoveryStep = end / step / mostRecoveries + 1;
        const bool mayRecover =
            kind.kills() && !kind.beside && (!options_.brief || kind.loss == 100);
        for (std::uint64_t point = first; point <= end; point += step) {
            if (options_.point != 0 && options_.point != point)
                continue;
            const Plan plan{&kind, point, options_.seed + point};
            const bool recovers = mayRecover && (point / step + 1) % recoveryStep == 0;
            const fs::path left = recovers ? besideHome("left") : "";
            if (runAndJudge(trial_, plan, "", left).bad.empty() && recovers)
                sweepRecovery(plan, left);
        }
    }

    // The library as the kill left it is opened, and that fails or is killed in its turn.
    void sweepRecovery(const Plan& first, const fs::path& left) {
        Trial recovery{opening(trial_.method.name, {}, "done", trial_.method.damaged), left,
                       trial_.states};
        recovery.method.mustReachNew = false;
        const std::string origin =
            std::string(" after ") + first.kind->name + " " + std::to_string(first.point);
        const Trace whole = runAndJudge(recovery, {}, origin).trace;
        for (const std::string_view name :
             std::span(kindsInRecovery).first(options_.brief ? 2 : std::size(kindsInRecovery))) {
            const Kind& kind = *std::ranges::find(kinds, name, &Kind::name);
            const std::uint64_t count = whole.counted[&kind - kinds];
            const std::uint64_t step = count / (options_.brief ? 1 : mostPointsInRecovery) + 1;
            for (std::uint64_t point = 1 + first.point % step; point <= count; point += step)
                runAndJudge(recovery, {&kind, point, options_.seed + point}, origin);
        }
    }

    const SweepOptions& options_;
    Trial trial_;
    std::uint64_t runs_ = 0, recoveries_ = 0, old_ = 0, new_ = 0, belied_ = 0, bad_ = 0;
};

// As many processes as there are processors, each with methods of its own. Libraries are made in
// memory: it cannot clone blocks, which would go past what is noted for power failing.
bool sweepAll(const std::vector<Method>& methods, const SweepOptions& options) {
    const support::ScratchHome base("/dev/shm");
    setenv("TZ", "UTC", 1);
    const std::size_t jobs = std::thread::hardware_concurrency();
    for (std::size_t job = 0; job < jobs; ++job) {
        if (fork() != 0)
            continue;
        bool good = true;
        for (std::size_t i = job; i < methods.size(); i += jobs) {
            setenv("HOME", (base / methods[i].name / "home").c_str(), 1);
            good = MethodSweep(methods[i], options).sweep() && good;
        }
        _exit(good ? 0 : 1);
    }
    bool good = true;
    for (int status = 0; wait(&status) > 0;)
        good = good && status == 0;
    return good;
}

} // namespace

int main(int count, char** arguments) {
    CLI::App app{"Fails and kills the embedded library at every file operation."};
    SweepOptions options;
    std::vector<std::string> only;
    app.add_flag("--short", options.brief, "Only some points of each method");
    app.add_option("--only", only, "These methods");
    app.add_option("--kind", options.kind, "This kind of fault");
    app.add_option("--point", options.point, "This operation, counted from 1");
    app.add_option("--seed", options.seed, "What is torn, and which points --short takes");
    CLI11_PARSE(app, count, arguments);
    std::vector<Method> methods = allMethods();
    std::erase_if(methods, [&](const Method& method) {
        return !only.empty() && std::ranges::find(only, method.name) == only.end();
    });
    std::setvbuf(stdout, nullptr, _IOLBF, 0); // lines of several processes, each of them whole
    std::puts("| method | operations | runs | of them in recovery | old | between | new | "
              "failure, yet new | bad |\n|---|--:|--:|--:|--:|--:|--:|--:|--:|");
    return !methods.empty() && sweepAll(methods, options) ? 0 : 1;
}
