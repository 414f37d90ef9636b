// What the library at HOME holds, as text to compare.
#pragma once

#include <string>

namespace faults {

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
