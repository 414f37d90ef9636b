// The title of a copy.
#pragma once

#include <optional>
#include <set>
#include <string>

// "<title> copy", or with the first free number from 2 to 999 behind it ("Trip copy 2") when a
// sibling has that title; without a title, of "Album". When all are taken, the copy shares its
// title with a sibling. Titles are compared exactly.
std::string titleForCopy(const std::optional<std::string>& title,
                         const std::set<std::string>& siblingTitles);
