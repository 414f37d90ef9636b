#include "tests/faults/run.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <span>

namespace faults {

namespace {

constexpr std::uint64_t mostRecoveries = 3;       // of a method and a kind of kill
constexpr std::uint64_t mostPointsInRecovery = 8; // for each kind of fault
// What goes wrong while the next process recovers; a brief sweep tries the first two.
constexpr std::string_view kindsInRecovery[] = {"io-once",   "kill-dropped", "io-on",    "space-on",
                                                "denied-on", "kill-kept",    "kill-torn"};

class MethodSweep {
public:
    MethodSweep(const Method& method, const SweepOptions& options)
        : options_(options), trial_(prepare(method)) {}

    Tally sweep() {
        tally_[operations] = runAndJudge(trial_, {}, "").trace.counted;
        for (const Kind& kind : kinds) {
            if (options_.kind.empty() || options_.kind == kind.name)
                sweepKind(kind);
        }
        return tally_;
    }

private:
    Outcome runAndJudge(const Trial& trial, const Plan& plan, const std::string& origin) {
        Outcome outcome = run(trial, plan);
        count(outcome, !origin.empty());
        if (!outcome.bad.empty())
            print(outcome, plan, origin);
        return outcome;
    }

    // The run that the fault does not reach is the last one: how many operations it could befall.
    std::uint64_t pointsOf(const Kind& kind, const Trial& trial, const std::string& origin) {
        const Plan beyond{&kind, std::numeric_limits<std::uint64_t>::max(), options_.seed};
        return runAndJudge(trial, beyond, origin).trace.counted;
    }

    // What a brief sweep looks at whole: every fault of a small change, and the power failing
    // during those that place and remove files.
    bool isWhole(const Kind& kind) const {
        const std::string& name = trial_.method.name;
        const bool placesAndRemoves = name == "import" || name == "edit-again";
        return !options_.brief || name == "favorite" ||
               (placesAndRemoves && kind.loss == Loss::unsynced);
    }

    void sweepKind(const Kind& kind) {
        const std::uint64_t points = pointsOf(kind, trial_, "");
        const std::uint64_t step = isWhole(kind) ? 1 : points + 1;
        const std::uint64_t recoveryStep = points / step / (isWhole(kind) ? mostRecoveries : 1) + 1;
        // A background thread may add to what was counted: a run beyond the end does no harm.
        for (std::uint64_t point = 1 + options_.seed % step; point <= points + step;
             point += step) {
            if (options_.point != 0 && point != options_.point)
                continue;
            const Plan plan{&kind, point, options_.seed + point};
            const bool good = runAndJudge(trial_, plan, "").bad.empty();
            const bool recovers = kind.kills() && !kind.beside && good &&
                                  (!options_.brief || kind.loss == Loss::unsynced) &&
                                  (point / step % recoveryStep == 0 || options_.point != 0);
            if (recovers)
                sweepRecovery(plan);
        }
    }

    // The library as the kill left it is opened, and that fails or is killed in its turn.
    void sweepRecovery(const Plan& first) {
        // What was judged has been opened already: the run is made once more.
        Trial recovery = trial_;
        recovery.original = leftBy(trial_, first);
        recovery.method.run = openLibrary;
        recovery.method.wanted = done;
        recovery.method.opensFirst = false;
        recovery.method.mustReachNew = false;
        const std::string origin =
            std::string(" after ") + first.kind->name + " " + std::to_string(first.point);
        for (const std::string_view name :
             std::span(kindsInRecovery).first(options_.brief ? 2 : 7)) {
            const Kind& kind = *std::ranges::find(kinds, name, &Kind::name);
            const std::uint64_t points = pointsOf(kind, recovery, origin);
            const std::uint64_t step = points / (options_.brief ? 1 : mostPointsInRecovery) + 1;
            for (std::uint64_t point = 1 + first.point % step; point <= points; point += step)
                runAndJudge(recovery, {&kind, point, options_.seed + point}, origin);
        }
    }

    void count(const Outcome& outcome, bool inRecovery) {
        const bool isNew = outcome.state == trial_.newest();
        const bool failed = outcome.answered && !outcome.success;
        ++tally_[runs];
        ++tally_[isNew ? newState : outcome.state == 0 ? oldState : between];
        ++tally_[failed ? failure : outcome.success ? success : killed];
        tally_[recoveries] += inRecovery;
        tally_[newThoughFailure] += failed && isNew && trial_.changes() && !inRecovery;
        tally_[bad] += !outcome.bad.empty();
    }

    void print(const Outcome& outcome, const Plan& plan, const std::string& origin) const {
        std::printf("--only %s --kind %s --point %lu --seed %lu%s: %s\n",
                    trial_.method.name.c_str(), plan.kind->name, plan.point, options_.seed,
                    origin.c_str(), outcome.trace.operation);
        for (const std::string& fault : outcome.bad)
            std::printf("    %s\n", fault.c_str());
        std::fflush(stdout);
    }

    const SweepOptions& options_;
    Trial trial_;
    Tally tally_{};
};

} // namespace

Tally sweep(const Method& method, const SweepOptions& options) {
    return MethodSweep(method, options).sweep();
}

} // namespace faults
