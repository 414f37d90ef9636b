// The place of a file that the host names, held by its folder so that it cannot be exchanged
// between a check and its use. The photo library's own folder is out of bounds.
#pragma once

#include "platform/local/system/library_error.h"
#include "platform/local/system/unique_fd.h"

#include <string>

namespace local {

struct HostFile {
    UniqueFd folder;
    std::string name; // in the folder; neither empty nor "." nor ".."
};

// Throws LibraryError when the folder does not exist, or when the place is the photo library's
// folder, lies inside it or holds it. The place of an edit's rendered picture is allowed.
HostFile changeableFile(const std::string& path);

// Whether the directory, or the nearest one above it that exists, lies outside the library, so that
// directories may be made there.
bool mayMakeDirectory(const std::string& path);

} // namespace local
