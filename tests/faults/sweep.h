// All faults at all points of a method, and again while the next process recovers.
#pragma once

#include "tests/faults/run.h"

#include <optional>

namespace faults {

struct SweepOptions {
    bool brief = false; // only some points of each kind, and little of the recovery
    std::optional<Kind> onlyKind;
    std::uint64_t onlyPoint = 0; // 0: all
    std::uint64_t seed = 1;
    bool verbose = false;
};

// One line of the table. Plain, because it is shared between processes.
struct Tally {
    std::uint64_t operations = 0; // on files of the library, without a fault
    std::uint64_t runs = 0;
    std::uint64_t recoveries = 0; // of these runs, those with a fault while the library opens anew
    std::uint64_t oldState = 0;
    std::uint64_t betweenStates = 0;
    std::uint64_t newState = 0;
    std::uint64_t successes = 0;
    std::uint64_t failures = 0;
    std::uint64_t killed = 0;
    std::uint64_t newThoughFailure = 0;
    std::uint64_t bad = 0;
};

// Prints each bad run with the options that repeat it.
Tally sweep(Workplace& workplace, const Method& method, const SweepOptions& options);

} // namespace faults
