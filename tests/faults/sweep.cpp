#include "tests/faults/sweep.h"

#include <cstdio>

namespace faults {

namespace {

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
    void sweepKind(Kind kind) {
        const std::uint64_t step = options_.brief ? 7 : 1;
        const std::uint64_t first = options_.onlyPoint ? options_.onlyPoint
                                    : options_.brief   ? 1 + options_.seed % step
                                                       : 1;
        for (std::uint64_t point = first;; point += step) {
            const Plan plan{kind, point, options_.seed + point};
            const Outcome outcome = workplace_.run(trial_, plan);
            judge(outcome, plan, "");
            if (kills(kind) && kind != Kind::killBeside && outcome.bad.empty())
                sweepRecovery(plan);
            if (!outcome.fired || options_.onlyPoint)
                return;
        }
    }

    // The library as the kill left it is opened, and that fails or is killed in its turn.
    void sweepRecovery(const Plan& first) {
        const std::uint64_t stride = options_.brief ? 23 : 4;
        if (first.point % stride != 1 && !options_.onlyPoint)
            return;
        // What was judged has been opened already: the run is made once more.
        Trial recovery = trial_;
        recovery.original = workplace_.leftBy(trial_, first);
        recovery.opensFirst = false;
        recovery.mustReachNew = false;
        recovery.run = openLibrary;
        const std::string origin =
            " after " + std::string(nameOf(first.kind)) + " " + std::to_string(first.point);
        for (const Kind kind : {Kind::ioOnce, Kind::ioOn, Kind::spaceOn, Kind::deniedOn,
                                Kind::killKept, Kind::killDropped, Kind::killTorn}) {
            const std::uint64_t step = options_.brief ? 41 : kills(kind) ? 1 : 3;
            for (std::uint64_t point = 1 + first.point % step;; point += step) {
                const Plan plan{kind, point, options_.seed + point};
                const Outcome outcome = workplace_.run(recovery, plan);
                ++tally_.recoveries;
                judge(outcome, plan, origin);
                if (!outcome.fired)
                    break;
            }
        }
    }

    void judge(const Outcome& outcome, const Plan& plan, const std::string& origin) {
        ++tally_.runs;
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
