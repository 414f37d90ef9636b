// Small libraries that have something of everything, and the calls that make them.
#pragma once

#include "tests/faults/methods.h"
#include "tests/support/jni_double.h"

#include "bridge/entry_points.h"

// A method of the host's class; its answer is text.
#define HOST(name, ...) jni::Environment().call(METHOD(name) __VA_OPT__(, ) __VA_ARGS__)

namespace faults {

Place here();
std::string pathInHome(const std::string& name);

// As processes make folders, or die before they do: all places of originals or renders.
void makeShelves(const std::filesystem::path& folder);

// Five assets: "plain", "favorite", "hidden", "edited", "trashed"; the album "Album" with three of
// them, "Other" with one, the folder "Folder" with the album "Inner".
Names prepareUsual();
// The same as a process left it that died: a placed original and a render without rows, an edit
// in progress, a file that no row names any longer.
Names prepareLeftBehind();
// Originals whose catalogue is gone.
Names prepareWithoutCatalogue();
// The usual one with a count that is wrong, and a file that no row names: "stray", by its path.
Names prepareDamaged();
void correctCount(int by);
// Three assets in a catalogue of an earlier version.
Names prepareOlder(std::size_t version);

} // namespace faults
