// The catalogue's tables, and how an older catalogue becomes a present one.
#pragma once

#include "platform/local/catalogue/catalogue_connection.h"

#include <span>

namespace local {

inline constexpr std::int64_t catalogueApplicationId = 0x70686b31; // "phk1"

// Step i (from 0) brings a catalogue of version i to version i + 1; version 0 is an empty file.
// A step that has been released is never edited: what comes later is a new step.
std::span<const char* const> schemaSteps();

// Whether it is an empty file still, in which no table has been made.
bool isNewCatalogue(CatalogueConnection& connection);

// Creates the tables in an empty catalogue or brings an older one up to date, in one transaction.
// Several processes may do so at once. Throws when the file is no catalogue of ours or is newer
// than this code, and then leaves it as it was.
void prepareSchema(CatalogueConnection& connection, std::span<const char* const> steps);

// Throws when the catalogue belongs to something else or to a newer version of this library.
void checkCatalogueIsOurs(CatalogueConnection& connection, std::size_t knownVersion);

} // namespace local
