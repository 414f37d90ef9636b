// One run of a method with one fault, in a process of its own, and what is found afterwards by
// another process; all faults at all points of a method, and again while the next process recovers.
// Runs of one process take place at its HOME, and beside it.
#pragma once

#include "tests/faults/fault_plan.h"
#include "tests/faults/methods.h"

#include <array>
#include <set>

namespace faults {

// A run to be made, over and over.
struct Trial {
    Method method;
    fs::path original;               // a home, copied for each run
    std::vector<std::string> states; // descriptions without new identifiers, from old to new
    std::set<std::string> known{};   // identifiers of the old state

    std::size_t newest() const { return states.size() - 1; }
    bool changes() const { return states.front() != states.back(); }
    // The last of those that fit; as many as there are when none fits.
    std::size_t stateOf(const std::string& description) const;
};

struct Outcome {
    bool answered = false; // or the process died first
    bool success = false;
    Trace trace;
    std::size_t state = 0;        // index into the states
    std::vector<std::string> bad; // why it must not be
};

// Prepares the method's library and finds out the states that it may have.
Trial prepare(const Method& method);

Outcome run(const Trial& trial, const Plan& plan);

// What a run leaves before anybody opens the library again, as the original of other trials; the
// next call replaces it.
fs::path leftBy(const Trial& trial, const Plan& plan);

struct SweepOptions {
    bool brief = false;      // only some points of each kind, and little of the recovery
    std::string kind;        // empty: all
    std::uint64_t point = 0; // 0: all
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
Tally sweep(const Method& method, const SweepOptions& options);

} // namespace faults
