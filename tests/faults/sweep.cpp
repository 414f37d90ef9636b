#include "tests/faults/sweep.h"

#include <cstdio>
#include <limits>

namespace faults {

namespace {

constexpr std::uint64_t mostPointsInBrief = 1;
constexpr std::uint64_t mostRecoveries = 3;       // of a method and a kind of kill
constexpr std::uint64_t mostPointsInRecovery = 8; // for each kind of fault

class MethodSweep {
public:
    MethodSweep(Workplace& workplace, const Method& method, const SweepOptions& options)
        : workplace_(workplace), method_(method), options_(options),
          trial_(workplace.prepare(method)) {}

    Tally sweep() {
        const Outcome untouched = workplace_.run(trial_, {});
        tally_.operations = untouched.operations;
        judge(untouched, {}, "");
        if (options_.verbose)
            printCalls(untouched);
        for (const Kind kind : allKinds) {
            if (!options_.onlyKind || *options_.onlyKind == kind)
                sweepKind(kind);
        }
        return tally_;
    }

private:
    // The run that the fault does not reach is the last one: how many operations it could befall.
    std::uint64_t pointsOf(Kind kind, const Trial& trial, const std::string& origin) {
        const Plan beyond{kind, std::numeric_limits<std::uint64_t>::max(), options_.seed};
        const Outcome outcome = workplace_.run(trial, beyond);
        judge(outcome, beyond, origin);
        return outcome.operations;
    }

    void sweepKind(Kind kind) {
        const std::uint64_t points = pointsOf(kind, trial_, "");
        const std::uint64_t step = options_.brief ? points / mostPointsInBrief + 1 : 1;
        const std::uint64_t recoveryStep =
            step * (points / step / (options_.brief ? 1 : mostRecoveries) + 1);
        // A background thread may add to what was counted: a run beyond the end does no harm.
        for (std::uint64_t point = 1 + options_.seed % step; point <= points + step;
             point += step) {
            if (options_.onlyPoint != 0 && point != options_.onlyPoint)
                continue;
            const Plan plan{kind, point, options_.seed + point};
            const Outcome outcome = workplace_.run(trial_, plan);
            judge(outcome, plan, "");
            const bool recovers = kills(kind) && kind != Kind::killBeside && outcome.bad.empty() &&
                                  (!options_.brief || kind == Kind::killDropped) &&
                                  (point / step % (recoveryStep / step) == 0 || options_.onlyPoint);
            if (recovers)
                sweepRecovery(plan);
        }
    }

    // The library as the kill left it is opened, and that fails or is killed in its turn.
    void sweepRecovery(const Plan& first) {
        // What was judged has been opened already: the run is made once more.
        Trial recovery = trial_;
        recovery.original = workplace_.leftBy(trial_, first);
        recovery.opensFirst = false;
        recovery.mustReachNew = false;
        recovery.run = openLibrary;
        const std::string origin =
            " after " + std::string(nameOf(first.kind)) + " " + std::to_string(first.point);
        for (const Kind kind : {Kind::ioOnce, Kind::killDropped, Kind::ioOn, Kind::spaceOn,
                                Kind::deniedOn, Kind::killKept, Kind::killTorn}) {
            if (options_.brief && kind != Kind::ioOnce && kind != Kind::killDropped)
                break;
            const std::uint64_t points = pointsOf(kind, recovery, origin);
            const std::uint64_t step = points / (options_.brief ? 1 : mostPointsInRecovery) + 1;
            for (std::uint64_t point = 1 + first.point % step; point <= points; point += step) {
                const Plan plan{kind, point, options_.seed + point};
                judge(workplace_.run(recovery, plan), plan, origin);
            }
        }
    }

    void judge(const Outcome& outcome, const Plan& plan, const std::string& origin) {
        ++tally_.runs;
        tally_.recoveries += origin.empty() ? 0 : 1;
        const std::size_t newest = trial_.states.newest();
        if (outcome.state == newest)
            ++tally_.newState;
        else if (outcome.state == 0)
            ++tally_.oldState;
        else
            ++tally_.betweenStates;
        if (outcome.reported == Outcome::Reported::success)
            ++tally_.successes;
        else if (outcome.reported == Outcome::Reported::failure)
            ++tally_.failures;
        else
            ++tally_.killed;
        const bool distinct =
            trial_.states.descriptions.front() != trial_.states.descriptions.back();
        if (outcome.reported == Outcome::Reported::failure && outcome.state == newest && distinct &&
            origin.empty()) {
            ++tally_.newThoughFailure;
            if (options_.verbose)
                print(outcome, plan, origin + ": new state although a failure was reported");
        }
        if (outcome.bad.empty())
            return;
        ++tally_.bad;
        print(outcome, plan, origin);
        for (const std::string& fault : outcome.bad)
            std::printf("    %s\n", fault.c_str());
        std::fflush(stdout);
    }

    void print(const Outcome& outcome, const Plan& plan, const std::string& more) const {
        std::printf("--only %s --kind %s --point %lu --seed %lu%s: %s %s\n", method_.name.c_str(),
                    std::string(nameOf(plan.kind)).c_str(), static_cast<unsigned long>(plan.point),
                    static_cast<unsigned long>(options_.seed), more.c_str(),
                    outcome.function.c_str(), outcome.path.c_str());
    }

    static void printCalls(const Outcome& outcome) {
        for (const auto& entry : outcome.calls)
            std::printf("%s %lu  ", entry.function, static_cast<unsigned long>(entry.calls));
        std::printf("\n");
    }

    Workplace& workplace_;
    const Method& method_;
    const SweepOptions& options_;
    Trial trial_;
    Tally tally_;
};

} // namespace

Tally sweep(Workplace& workplace, const Method& method, const SweepOptions& options) {
    return MethodSweep(workplace, method, options).sweep();
}

} // namespace faults
