// One run of a method with one fault, in a process of its own, and what is found afterwards by
// another process. Runs of one process take place at its HOME, and beside it.
#pragma once

#include "tests/faults/fault_plan.h"
#include "tests/faults/methods.h"

namespace faults {

// A run to be made, over and over.
struct Trial {
    Method method;
    fs::path original; // a home, copied for each run
    // Descriptions, from old to new. Identifiers that the old one does not have are NEW in them.
    std::vector<std::string> states{};

    std::size_t newest() const { return states.size() - 1; }
    bool changes() const { return states.front() != states.back(); }
    // The last of those that fit; as many as there are when none fits.
    std::size_t stateOf(const std::string& description) const;
};

struct Outcome {
    bool answered = false; // or the process died first
    bool success = false;
    Trace trace;
    std::size_t state = 0;          // index into the states
    std::vector<std::string> bad{}; // why it must not be
};

// Prepares the method's library and finds out the states that it may have.
Trial prepare(const Method& method);

// `left` gets a copy of the home as it is before anybody opens the library again; empty: no copy.
Outcome run(const Trial& trial, const Plan& plan, const fs::path& left = {});

// --- library_state.cpp: what the library at HOME holds, as text to compare ---

// All that an owner can tell of the library and of a backup beside it: assets with their marks,
// hashes, edits and trash; albums and folders as a tree, in order, with their members in order;
// access and settings. One line each, without row numbers and times. Opens the library; where that
// fails it is a finding, beside the files that are there. `verified` adds what verification finds,
// and what must not be once the library was opened anew: files that no row names, files on their
// way in or out.
std::string describe(bool verified);

// Whether it is a description, and without findings.
bool isWhole(const std::string& description);

// Puts NEW for each identifier that the old description does not have.
std::string withoutNewIdentifiers(std::string description, const std::string& old);

} // namespace faults
