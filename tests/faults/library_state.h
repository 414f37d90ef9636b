// What the library at HOME holds, as text to compare, and what is wrong with it.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace faults {

// All that an owner can tell of the library: assets with their marks, hashes, edits and trash;
// albums and folders as a tree, in order, with their members in order; access and settings. One
// line each, without row numbers and times. Opens the library; throws LibraryError.
std::string describeLibrary();

// What a backup holds that is in force, with what is wrong with it; nothing where there is none.
std::string describeBackup();

// Puts NEW for each identifier that is not among `known`.
std::string withoutNewIdentifiers(std::string description, const std::set<std::string>& known);
std::set<std::string> identifiersIn(const std::string& description);

// What must never be: what is kept twice does not agree. `strangers` adds what must not be once the
// library was opened anew: files missing or changed, files that no row names, places of edits.
std::vector<std::string> faultsOfLibrary(bool strangers);

} // namespace faults
