// The JSON object that describes one album, folder or smart album in a listing.
#pragma once

#include "platform/collection.h"

#include <cstddef>
#include <string>

enum class CollectionKind {
    album,
    folder,
    smart,
};

// Appends the record, without whitespace. `count` is the number of assets, or of a folder's
// direct children.
void appendCollectionRecord(std::string& json, const platform::PHCollection& collection,
                            CollectionKind kind, std::size_t count);
