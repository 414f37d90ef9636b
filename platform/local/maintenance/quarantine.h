// The folder "quarantine" in a library: where repairs put what they take away.
#pragma once

#include "platform/local/maintenance/library_reader.h"
#include "platform/local/store/file_store.h"

#include <string>

namespace local {

// Moves the file `path` of the library there, durably; answers its new path. A name that is taken
// gets a number. Throws.
std::string moveToQuarantine(int library, const std::string& path);

// Looks in the quarantine for a file with this content; answers its path in the library, or
// nothing.
std::string findInQuarantine(int library, const NamedFile& wanted);

// Copies the file `found` of another library (its folder `from`) for `wanted` to the quarantine,
// durably; answers the copy's path. Throws.
std::string copyToQuarantine(int library, const NamedFile& wanted, int from,
                             const std::string& found);

// Moves the file `found` of the library to the place of `wanted`, which must be free. Throws.
void putInPlace(int library, const NamedFile& wanted, const std::string& found);

} // namespace local
