// One run of a method with one fault, in a process of its own, and what is found afterwards by
// another process; all faults at all points of a method, and again while the next process recovers.
#pragma once

#include "tests/faults/fault_plan.h"
#include "tests/faults/methods.h"

#include <optional>
#include <set>
#include <string>
#include <sys/types.h>
#include <vector>

namespace faults {

// What a library may be found to be, from the old state to the new one.
struct States {
    std::set<std::string> known;           // identifiers of the old state
    std::vector<std::string> descriptions; // without new identifiers

    std::size_t newest() const { return descriptions.size() - 1; }
    // The last of those that fit; as many as there are when none fits.
    std::size_t indexOf(const std::string& description) const;
};

// A run to be made, over and over.
struct Trial {
    std::filesystem::path original; // a home, copied for each run
    std::function<Report(const Names&)> run;
    Names names;
    States states;
    Terms terms;
};

struct Outcome {
    enum class Reported { nothing, success, failure } reported = Reported::nothing;
    Trace trace;
    std::size_t state = 0;        // index into the states
    std::vector<std::string> bad; // why it must not be
};

// The folder in which runs take place, one at a time.
class Workplace {
public:
    explicit Workplace(std::filesystem::path folder);
    ~Workplace();
    Workplace(const Workplace&) = delete;
    Workplace& operator=(const Workplace&) = delete;

    // Prepares the method's library and finds out the states that it may have.
    Trial prepare(const Method& method);

    Outcome run(const Trial& trial, const Plan& plan);

    // What a run leaves before anybody opens the library again, as the original of other trials;
    // the next call replaces it.
    std::filesystem::path leftBy(const Trial& trial, const Plan& plan);

private:
    struct Shared;

    Place place() const { return {folder_ / "run" / "home"}; }
    void renew(const std::filesystem::path& original);
    int inProcess(const std::function<void()>& body);
    pid_t startNeighbour(const Trial& trial);
    void describe(const Terms& terms, bool strangers);
    std::string describeFresh(const Terms& terms, std::vector<std::string>& bad);
    std::string describeAfter(const Trial& trial, const std::function<void(const Names&)>& action);
    void runMethod(const Trial& trial, const Plan& plan);
    void judge(const Trial& trial, const Plan& plan, int status, Outcome& outcome);

    std::filesystem::path folder_;
    Shared* shared_;
};

struct SweepOptions {
    bool brief = false; // only some points of each kind, and little of the recovery
    std::optional<Kind> onlyKind;
    std::uint64_t onlyPoint = 0; // 0: all
    std::uint64_t seed = 1;
};

// One line of the table, by its columns. Plain, because it is shared between processes.
enum Column {
    operations,
    runs,
    recoveries,
    oldState,
    between,
    newState,
    success,
    failure,
    killed,
    newThoughFailure,
    bad,
    columns
};
using Tally = std::array<std::uint64_t, columns>;

// Prints each bad run with the options that repeat it.
Tally sweep(Workplace& workplace, const Method& method, const SweepOptions& options);

} // namespace faults
