// What a library holds, as text to compare, and what is wrong with it.
#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace faults {

// All that an owner can tell of the library at HOME: assets with their marks, hashes, edits and
// trash; albums and folders as a tree, in order, with their members in order; access and settings.
// One line each, without row numbers and times. Opens the library; throws LibraryError.
std::string describeLibrary();

// What a backup holds that is in force, with what is wrong with it; nothing where there is none.
std::string describeBackup(const std::filesystem::path& backup);

// Puts NEW for each identifier that is not among `known`, and sorts lines that begin with one.
std::string withoutNewIdentifiers(const std::string& description,
                                  const std::set<std::string>& known);
std::set<std::string> identifiersIn(const std::string& description);

// What must never be: a damaged catalogue, counts that do not agree with the rows, a file that is
// missing or is not what was imported. `strangers` adds what must not be once the library was
// opened anew: files that no row names, markers, places of edits.
std::vector<std::string> faultsOfLibrary(const std::filesystem::path& library, bool strangers);

} // namespace faults
