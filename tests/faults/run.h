// One run of a method with one fault, in a process of its own, and what is found afterwards by
// another process.
#pragma once

#include "tests/faults/fault_plan.h"
#include "tests/faults/methods.h"

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
    bool opensFirst = true;
    bool mustReachNew = true;    // when it reports success
    bool damaged = false;        // what is found wrong with it belongs to its state
    bool refused = false;        // the library must not open
    bool partialSuccess = false; // success may leave a part undone, as the method's contract says
};

struct Outcome {
    enum class Reported { nothing, success, failure } reported = Reported::nothing;
    bool fired = false;
    std::string function, path; // of the operation that went wrong
    std::uint64_t operations = 0;
    std::size_t state = 0;        // index into the states
    std::vector<std::string> bad; // why it must not be
    std::vector<Trace::Count> calls;
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
    void describe(const Trial& trial, bool strangers);
    std::string describeFresh(const Trial& trial, std::vector<std::string>& bad);
    std::string describeAfter(const Trial& trial, const std::function<void(const Names&)>& action);
    void runMethod(const Trial& trial, const Plan& plan);
    void judge(const Trial& trial, const Plan& plan, int status, Outcome& outcome);

    std::filesystem::path folder_;
    Shared* shared_;
};

} // namespace faults
