// Uniform type identifiers of files.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace local {

// The type that a file name's ending promises, in any case of letters; nothing for none or an
// unknown one.
std::optional<std::string> contentTypeOfName(std::string_view name);

bool isMovieType(std::string_view contentType);

// The ending of a file name in lower case, without the dot; empty when there is none that is fit
// for a name in the file store (letters and digits, at most ten).
std::string storableEnding(std::string_view name);

} // namespace local
