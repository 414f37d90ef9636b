// Small libraries that have something of everything.
#pragma once

#include "tests/faults/methods.h"

namespace faults {

// Calls that a host makes, in short.
std::string importPicture(const std::string& path); // the new identifier, or nothing
std::string makeAlbum(const std::string& title, const std::string& parent = "");
std::string makeFolder(const std::string& title);
bool addToAlbum(const std::string& album, const std::string& asset);
bool applyEdit(const std::string& asset, const std::string& rendered);
bool fileInto(const std::string& album, const std::string& folder);
std::string pathInHome(const std::string& name);

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
void mendCount();
void takeStrayAway(const Names& names);
// Three assets in a catalogue of an earlier version.
Names prepareOlder(std::size_t version);
// Nothing at all.
Names prepareNothing();

} // namespace faults
