#include "tests/faults/sweep.h"

#include "tests/faults/run.h"

#include <algorithm>
#include <cstdio>
#include <numeric>
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
        const Trace whole = runAndJudge(trial_, {}).trace;
        tally_[operations] = whole.counted[0];
        for (const Kind& kind : kinds) {
            if (options_.kind.empty() || options_.kind == kind.name)
                sweepKind(kind, whole.counted[&kind - kinds]);
        }
        return tally_;
    }

private:
    Outcome runAndJudge(const Trial& trial, const Plan& plan, const std::string& origin = "",
                        const fs::path& left = {}) {
        Outcome outcome = run(trial, plan, left);
        count(outcome, !origin.empty());
        if (!outcome.bad.empty())
            print(outcome, plan, origin);
        return outcome;
    }

    // What a brief sweep looks at whole: every fault of a small change, and the power failing
    // during those that place and remove files.
    bool isWhole(const Kind& kind) const {
        const std::string& name = trial_.method.name;
        const bool placesAndRemoves = name == "import" || name == "edit-again";
        return !options_.brief || name == "favorite" ||
               (placesAndRemoves && kind.loss == Loss::unsynced);
    }

    // Counted to one beyond the end: a process that has answered is killed, too, and a background
    // thread may add to what was counted. A brief sweep takes another point for each method and
    // kind, and looks at what was answered before the power fails.
    std::vector<std::uint64_t> pointsOf(const Kind& kind, std::uint64_t count) const {
        if (options_.point != 0)
            return {options_.point};
        std::vector<std::uint64_t> points(count + 1);
        std::iota(points.begin(), points.end(), 1);
        if (isWhole(kind) || count == 0)
            return points;
        const std::size_t any = std::hash<std::string>()(trial_.method.name + kind.name);
        const std::uint64_t one = 1 + (any + options_.seed) % count;
        return failsPower(kind) ? std::vector{one, count + 1} : std::vector{one};
    }

    static bool failsPower(const Kind& kind) { return kind.kills() && kind.loss == Loss::unsynced; }

    void sweepKind(const Kind& kind, std::uint64_t count) {
        const std::vector<std::uint64_t> points = pointsOf(kind, count);
        const std::size_t recoveryStep = points.size() / mostRecoveries + 1;
        const bool mayRecover =
            kind.kills() && !kind.beside && (!options_.brief || failsPower(kind));
        for (std::size_t i = 0; i < points.size(); ++i) {
            const Plan plan{&kind, points[i], options_.seed + points[i]};
            const bool recovers = mayRecover && (i + 1) % recoveryStep == 0;
            const fs::path left = recovers ? besideHome("left") : "";
            if (runAndJudge(trial_, plan, "", left).bad.empty() && recovers)
                sweepRecovery(plan, left);
        }
    }

    // The library as the kill left it is opened, and that fails or is killed in its turn.
    void sweepRecovery(const Plan& first, const fs::path& left) {
        Trial recovery = trial_;
        recovery.original = left;
        recovery.method.run = openLibrary;
        recovery.method.wanted = done;
        recovery.method.before = [] {};
        recovery.method.opensFirst = false;
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

    void count(const Outcome& outcome, bool inRecovery) {
        const bool isNew = outcome.state == trial_.newest();
        const bool failed = outcome.answered && !outcome.success;
        ++tally_[runs];
        ++tally_[isNew ? renewed : outcome.state == 0 ? old : between];
        tally_[recoveries] += inRecovery;
        tally_[belied] += failed && isNew && trial_.changes() && !inRecovery;
        tally_[bad] += !outcome.bad.empty();
    }

    void print(const Outcome& outcome, const Plan& plan, const std::string& origin) const {
        std::printf("--only %s --kind %s --point %lu --seed %lu%s: %s\n",
                    trial_.method.name.c_str(), plan.kind->name, plan.point, options_.seed,
                    origin.c_str(), outcome.trace.operation);
        for (const std::string& fault : outcome.bad)
            std::printf("    %s\n", fault.c_str());
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
