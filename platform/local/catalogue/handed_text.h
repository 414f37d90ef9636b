// Names and titles on their way to hosts.
#pragma once

#include <string>
#include <string_view>

namespace local {

// The text as hosts are handed it: with U+FFFD for each character outside the Basic Multilingual
// Plane, which the JVM cannot read and would cut the end of a whole answer for, and for each byte
// that belongs to no character. Everything else stays as it is.
std::string handedText(std::string_view text);

} // namespace local
