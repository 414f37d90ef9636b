// The changing methods and commands, each on a library prepared for it.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace faults {

// Where a run takes place: HOME, with the library inside it.
struct Place {
    std::filesystem::path home;

    std::filesystem::path pictures() const { return home / "Pictures"; } // what is watched
    std::filesystem::path library() const { return pictures() / "Lumatrice Library"; }
    std::filesystem::path backup() const { return pictures() / "Backup"; }
};

// Identifiers of what a prepared library holds, by the names used here.
using Names = std::map<std::string, std::string>;

struct Report {
    bool success = false;
    std::string identifier; // of what was made, when the method answers one
};

// What a method's run is about, beyond what it does.
struct Terms {
    bool opensFirst = true;      // the library is opened, untouched, before faults begin
    bool partialSuccess = false; // success may leave a part undone, as the contract has it
    bool refused = false;        // the library must not open, and nothing in it may change
    bool damaged = false;        // to begin with: what is found is part of the library's state
    bool mustReachNew = true;    // when it reports success
    bool mayFailLate = false;    // with all of it in force already
    // A library has 256 shelves for originals from the start; runs are shorter without the empty
    // ones, as in a library whose owner has tidied up.
    bool emptyShelves = false;
};

// The library's states, in the order in which a method that consists of several transactions
// brings them about. Most have one: old, then new.
struct Method {
    std::string name;
    // Makes the library at HOME; runs in a process of its own. Answers the names in it.
    std::function<Names()> prepare;
    // The method, as a host or the tool calls it.
    std::function<Report(const Names&)> run;
    // Brings about the states between the old and the new one, each from the old one.
    std::vector<std::function<void(const Names&)>> between;
    Terms terms;
};

const std::vector<Method>& allMethods();

// The next opening of a library, whatever was done to it.
Report openLibrary(const Names&);

// Makes the pictures that methods import, in HOME.
void writePictures(const Place& place);

} // namespace faults
