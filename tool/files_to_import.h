// Which files an import is about.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tool {

struct RefusedPath {
    std::string path;
    std::string reason; // a sentence
};

struct FilesToImport {
    std::vector<std::filesystem::path> files; // in the order given; below a folder by path
    std::vector<RefusedPath> refused;
};

// Files as they are named; folders with all that is below them, save names that begin with a dot.
// Links to files are followed. What cannot be followed or read is refused and holds up nothing
// else. The photo library's own folder is never a source.
FilesToImport findFilesToImport(const std::vector<std::string>& paths);

} // namespace tool
