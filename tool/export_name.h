// Names for exported files, made of the names that assets had when they were imported: strangers'
// data, which may hold anything.
#pragma once

#include <string>
#include <string_view>

namespace tool {

// One component of a path: no slash, no control character, nothing hidden, neither "." nor "..",
// UTF-8, not empty.
std::string safeName(std::string_view filename);

// `name` for a file that is a JPEG now: its ending becomes .jpg unless it is one of JPEG's.
std::string jpegName(std::string name);

// `name` for 1, else with the number before its ending: "a (2).jpg". At most as long as file
// systems take.
std::string numberedName(const std::string& name, unsigned number);

} // namespace tool
