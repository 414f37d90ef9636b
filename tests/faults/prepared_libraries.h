// Small libraries that have something of everything, made at HOME, and the calls that make them.
#pragma once

#include "tests/support/jni_double.h"

#include "bridge/entry_points.h"

#include <cstdlib>
#include <filesystem>
#include <string>

// A method of the host's class; its answer is text.
#define HOST(name, ...) jni::Environment().call(METHOD(name), __VA_ARGS__)

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

// The identifier (or the path) of what a prepared library holds, by its name below.
std::string id(const std::string& name);
void keepId(const std::string& name, const std::string& identifier);

// The pictures that methods import, by their names without ending.
std::string picture(const std::string& name);
void writePictures();

// As processes make folders, or die before they do: all places of renders.
void makeShelves();

// Five assets: "plain", "favorite", "hidden", "edited", "trashed"; the album "Album" with three of
// them, "Other" with one, the folder "Folder" with the album "Inner".
void prepareNew();
// The same without the empty ones of the 256 shelves that a new library has for originals, as one
// whose owner has tidied up: runs are shorter.
void prepareUsual();
// The same as a process left it that died: a placed original and a render without rows, an edit
// in progress, a file that no row names any longer.
void prepareLeftBehind();
// Originals whose catalogue is gone.
void prepareWithoutCatalogue();
// The usual one with a count that is wrong, and a file that no row names: "stray", by its path.
void prepareDamaged();
void correctCount(int by);
// Three assets in a catalogue of an earlier version.
void prepareOlder(std::size_t version);

} // namespace faults
