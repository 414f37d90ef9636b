// JPEG files of a wanted size for workloads that only need bytes.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace bench {

// Makes the files in `folder` unless they are there; answers their paths. Each decodes, has other
// bytes than the rest, and about `bytes` of them.
std::vector<std::string> noiseJpegs(const std::filesystem::path& folder, int count,
                                    std::size_t bytes);

} // namespace bench
