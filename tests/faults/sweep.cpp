#include "tests/faults/run.h"

#include <cstdio>
#include <limits>

namespace faults {

namespace {

constexpr std::uint64_t mostRecoveries = 3;       // of a method and a kind of kill
constexpr std::uint64_t mostPointsInRecovery = 8; // for each kind of fault

class MethodSweep {
public:
    MethodSweep(Workplace& workplace, const Method& method, const SweepOptions& options)
        : workplace_(workplace), method_(method), options_(options),
          trial_(workplace.prepare(method)) {}

    Tally sweep() {
        tally_[operations] = runAndJudge(trial_, {}, "").trace.counted;
        for (const Kind kind : allKinds) {
            if (!options_.onlyKind || *options_.onlyKind == kind)
                sweepKind(kind);
        }
        return tally_;
    }

private:
    Outcome runAndJudge(const Trial& trial, const Plan& plan, const std::string& origin) {
        Outcome outcome = workplace_.run(trial, plan);
        count(outcome, !origin.empty());
        if (!outcome.bad.empty())
            print(outcome, plan, origin);
        return outcome;
    }

    // The run that the fault does not reach is the last one: how many operations it could befall.
    std::uint64_t pointsOf(Kind kind, const Trial& trial, const std::string& origin) {
        const Plan beyond{kind, std::numeric_limits<std::uint64_t>::max(), options_.seed};
        return runAndJudge(trial, beyond, origin).trace.counted;
    }

    // What a brief sweep looks at whole: every fault of a small change, and the power failing
    // during those that place and remove files.
    bool isTypical(Kind kind) const {
        const std::string& name = method_.name;
        const bool placesAndRemoves = name == "import" || name == "edit-again";
        return name == "favorite" ||
               (placesAndRemoves && (kind == Kind::killDropped || kind == Kind::retry));
    }

    void sweepKind(Kind kind) {
        const std::uint64_t points = pointsOf(kind, trial_, "");
        const std::uint64_t step = options_.brief && !isTypical(kind) ? points + 1 : 1;
        const std::uint64_t recoveryStep =
            points / step / (options_.brief && !isTypical(kind) ? 1 : mostRecoveries) + 1;
        // A background thread may add to what was counted: a run beyond the end does no harm.
        for (std::uint64_t point = 1 + options_.seed % step; point <= points + step;
             point += step) {
            if (options_.onlyPoint != 0 && point != options_.onlyPoint)
                continue;
            const Plan plan{kind, point, options_.seed + point};
            const bool good = runAndJudge(trial_, plan, "").bad.empty();
            const bool recovers = kills(kind) && kind != Kind::killBeside && good &&
                                  (!options_.brief || kind == Kind::killDropped) &&
                                  (point / step % recoveryStep == 0 || options_.onlyPoint != 0);
            if (recovers)
                sweepRecovery(plan);
        }
    }

    // The library as the kill left it is opened, and that fails or is killed in its turn.
    void sweepRecovery(const Plan& first) {
        // What was judged has been opened already: the run is made once more.
        Trial recovery = trial_;
        recovery.original = workplace_.leftBy(trial_, first);
        recovery.terms.opensFirst = false;
        recovery.terms.mustReachNew = false;
        recovery.run = openLibrary;
        const std::string origin =
            " after " + nameOf(first.kind) + " " + std::to_string(first.point);
        for (const Kind kind : {Kind::ioOnce, Kind::killDropped, Kind::ioOn, Kind::spaceOn,
                                Kind::deniedOn, Kind::killKept, Kind::killTorn}) {
            if (options_.brief && kind != Kind::ioOnce && kind != Kind::killDropped)
                break;
            const std::uint64_t points = pointsOf(kind, recovery, origin);
            const std::uint64_t step = points / (options_.brief ? 1 : mostPointsInRecovery) + 1;
            for (std::uint64_t point = 1 + first.point % step; point <= points; point += step)
                runAndJudge(recovery, {kind, point, options_.seed + point}, origin);
        }
    }

    void count(const Outcome& outcome, bool inRecovery) {
        const States& states = trial_.states;
        const bool isNew = outcome.state == states.newest();
        const bool distinct = states.descriptions.front() != states.descriptions.back();
        const bool failed = outcome.reported == Outcome::Reported::failure;
        ++tally_[runs];
        tally_[recoveries] += inRecovery ? 1 : 0;
        ++tally_[isNew ? newState : outcome.state == 0 ? oldState : between];
        ++tally_[failed                                           ? failure
                 : outcome.reported == Outcome::Reported::success ? success
                                                                  : killed];
        tally_[newThoughFailure] += failed && isNew && distinct && !inRecovery ? 1 : 0;
        tally_[bad] += outcome.bad.empty() ? 0 : 1;
    }

    void print(const Outcome& outcome, const Plan& plan, const std::string& origin) const {
        std::printf("--only %s --kind %s --point %lu --seed %lu%s: %s\n", method_.name.c_str(),
                    nameOf(plan.kind).c_str(), plan.point, options_.seed, origin.c_str(),
                    outcome.trace.operation);
        for (const std::string& fault : outcome.bad)
            std::printf("    %s\n", fault.c_str());
        std::fflush(stdout);
    }

    Workplace& workplace_;
    const Method& method_;
    const SweepOptions& options_;
    Trial trial_;
    Tally tally_{};
};

} // namespace

Tally sweep(Workplace& workplace, const Method& method, const SweepOptions& options) {
    return MethodSweep(workplace, method, options).sweep();
}

} // namespace faults
