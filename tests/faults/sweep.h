// All faults at all points of a method, and again while the next process recovers.
#pragma once

#include "tests/faults/methods.h"

#include <array>
#include <cstdint>

namespace faults {

struct SweepOptions {
    bool brief = false;      // only some points of each kind, and little of the recovery
    std::string kind;        // empty: all
    std::uint64_t point = 0; // 0: all
    std::uint64_t seed = 1;
};

// One line of the table, by its columns.
enum Column { operations, runs, recoveries, old, between, renewed, belied, bad, columns };
using Tally = std::array<std::uint64_t, columns>;

// Prints each bad run with the options that repeat it.
Tally sweep(const Method& method, const SweepOptions& options);

} // namespace faults
