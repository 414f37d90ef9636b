// Text for people at a terminal. Names of files and titles of albums are strangers' data: what is
// printed must not be able to move the cursor, start a line or turn the writing direction.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tool {

// The text as one line of visible characters: control characters, characters that are not seen or
// turn the direction, and bytes that are no UTF-8 are written as \n, \x1b, \u202e and the like.
std::string printable(std::string_view text);

// Standard UTF-8, with U+FFFD for every byte that belongs to no character.
std::string validUtf8(std::string_view bytes);

// How many columns of a terminal the text takes.
std::size_t columnsOf(std::string_view printable);
// At most this many columns of it; the middle goes, so that a file name keeps its ending.
std::string shortened(const std::string& printable, std::size_t columns);

std::string countText(std::int64_t count, std::string_view one, std::string_view many);
std::string sizeText(std::int64_t bytes);        // "3.4 MB"
std::string dateText(std::int64_t milliseconds); // since 1970; local time, to the minute

} // namespace tool
