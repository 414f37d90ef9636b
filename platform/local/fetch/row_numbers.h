// Assets as their row numbers, and row numbers as a parameter of a statement.
#pragma once

#include "platform/asset.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace local {

// In the order of the fetch. Assets that are gone may be among them.
std::vector<std::int64_t> rowNumbers(const platform::PHFetchResult<platform::PHAsset>& assets);

// For SQLite's json_each, which makes rows of it: a change of any number of assets is then one
// statement.
std::string jsonArray(std::span<const std::int64_t> numbers);

} // namespace local
