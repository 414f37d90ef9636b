// JSON text, written by hand into a growing buffer. Listings hold no whitespace.
#pragma once

#include <optional>
#include <string>
#include <string_view>

// Appends the text, UTF-8 or missing, as a quoted string literal; a missing text gives "". Quote,
// backslash, tab, line feed and carriage return get their short escapes, other control characters
// \u and four lowercase digits; everything else, DEL and "/" included, stands as it is.
void appendJsonString(std::string& buffer, std::optional<std::string_view> text);

void appendJsonNumber(std::string& buffer, unsigned long number);
void appendJsonNumber(std::string& buffer, long long number);
void appendJsonBoolean(std::string& buffer, bool value);
