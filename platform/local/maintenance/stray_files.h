// Files in the store that no row names.
#pragma once

#include "platform/local/maintenance/findings.h"
#include "platform/local/maintenance/library_reader.h"

namespace local {

// Whether nothing accounts for the file `originals/AB/name` or `renders/AB/name`: no row, no
// importer at work, no note that it is on its way out.
bool isUnnamed(LibraryReader& reader, Stored kind, const std::string& name);

// Adds them to the findings, and counts what the next opening of the library removes.
void findStrayFiles(LibraryReader& reader, Verification& result);

} // namespace local
