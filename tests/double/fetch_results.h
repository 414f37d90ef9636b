// Fetch results of the scripted library: lists that were filled when the fetch was made.
#pragma once

#include "platform/asset.h"

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace scripted {

template <class Record>
using Records = std::vector<std::optional<Record>>; // nil objects have no value

template <class Record>
struct Snapshot {
    Records<Record> records;
    std::size_t count = 0;
};

template <class Record>
platform::PHFetchResult<Record> resultOf(Records<Record> records,
                                         std::optional<std::size_t> countClaimed = std::nullopt) {
    const std::size_t count = countClaimed.value_or(records.size());
    platform::PHFetchResult<Record> result;
    result.object = std::make_shared<Snapshot<Record>>(Snapshot<Record>{std::move(records), count});
    return result;
}

template <class Record>
const Snapshot<Record>& snapshotOf(const platform::PHFetchResult<Record>& result) {
    return *static_cast<const Snapshot<Record>*>(result.object.get());
}

template <class List>
List listUnder(const std::string& identifier, const std::map<std::string, List>& lists) {
    const auto entry = lists.find(identifier);
    return entry == lists.end() ? List() : entry->second;
}

// The identifiers in the result, "(nil)" for nil objects, with commas between them.
template <class Record>
std::string identifiersIn(const platform::PHFetchResult<Record>& result) {
    std::string line;
    for (const auto& record : snapshotOf(result).records)
        line += (line.empty() ? "" : ",") + (record ? record->localIdentifier : "(nil)");
    return line;
}

std::string joined(const std::vector<std::string>& texts);

// ", by KEY ascending" for each sort descriptor, and the predicate.
std::string describe(const platform::PHFetchOptions& options);

} // namespace scripted
