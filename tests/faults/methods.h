// The changing methods and commands, each on a library prepared for it.
#pragma once

#include "tests/faults/prepared_libraries.h"

#include <functional>
#include <string>
#include <vector>

namespace faults {

inline constexpr const char* done = "done"; // what a command answers

// The library's states, in the order in which a method that consists of several transactions
// brings them about. Most have one: old, then new.
struct Method {
    std::string name;
    // The method, as a host or the tool calls it, and its answer.
    std::function<std::string()> run;
    std::string wanted{}; // the answer of a success; empty: identifiers of what was made
    // Bring about the states between the old and the new one, each from the old one.
    std::vector<std::function<void()>> between{};
    // Makes the library at HOME; runs in a process of its own.
    std::function<void()> prepare = prepareUsual;
    // What others did just before, and did not sync. Nothing goes wrong in it.
    std::function<void()> before = [] {};

    bool opensFirst = true;      // the library is opened, untouched, before faults begin
    bool partialSuccess = false; // success may leave a part undone, as the contract has it
    bool refused = false;        // the library must not open, and nothing in it may change
    bool damaged = false;        // to begin with: what is found is part of the library's state
    bool mustReachNew = true;    // when it reports success
    bool mayFailLate = false;    // with all of it in force already

    bool makes() const { return wanted.empty(); }
    bool isSuccess(const std::string& answer) const {
        return makes() ? answer.find("(null)") == std::string::npos : answer == wanted;
    }
};

std::vector<Method> allMethods();

// The next opening of a library, whatever was done to it.
std::string openLibrary();

} // namespace faults
