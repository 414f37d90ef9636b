// The changing methods and commands, each on a small library prepared for it at HOME.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace faults {

namespace fs = std::filesystem;

inline fs::path home() {
    return std::getenv("HOME");
}
// A file or folder that stays when HOME is made anew.
inline fs::path besideHome(const std::string& name) {
    return home().parent_path() / name;
}
inline fs::path watched() {
    return home() / "Pictures";
}
inline fs::path library() {
    return watched() / "Lumatrice Library";
}
inline fs::path backup() {
    return watched() / "Backup";
}

// Five assets: "plain", "favorite", "hidden", "edited", "trashed"; the album "Album" with three of
// them, the folder "Folder" with the album "Inner" and one. Without the empty ones of the 256
// shelves that a new library has, as one whose owner has tidied up: runs are shorter.
void prepareUsual();

// The library's states, in the order in which a method that consists of several transactions
// brings them about. Most have one: old, then new.
struct Method {
    std::string name;
    // The method, as a host or the tool calls it, and its answer.
    std::function<std::string()> run;
    std::string wanted{}; // the answer of a success; empty: identifiers of what was made
    // Bring about the states between the old and the new one, each from the old one.
    std::vector<std::function<void()>> between{};
    // Makes the library; runs in a process of its own.
    std::function<void()> prepare = prepareUsual;
    // What others did just before, and did not sync. Nothing goes wrong in it.
    std::function<void()> before = [] {};

    bool opensFirst = true;      // the library is opened, untouched, before faults begin
    bool partialSuccess = false; // success may leave a part undone, as the contract has it
    bool damaged = false;        // to begin with: what is found is part of the library's state
    bool mustReachNew = true;    // when it reports success
    bool mayFailLate = false;    // with all of it in force already

    bool isSuccess(const std::string& answer) const {
        return wanted.empty() ? answer.find("(null)") == std::string::npos : answer == wanted;
    }
};

std::vector<Method> allMethods();

// The next opening of a library, and what it is to answer.
Method opening(const std::string& name, const std::function<void()>& prepare,
               const std::string& wanted = "done", bool damaged = false);

} // namespace faults
