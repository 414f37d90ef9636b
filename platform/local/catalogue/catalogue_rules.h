// What must hold inside a catalogue beyond what SQLite itself enforces: what is kept twice, for
// speed, must agree, and collections must be a tree.
#pragma once

#include <span>

namespace local {

struct CatalogueRule {
    const char* subject;   // in a word or two
    const char* violation; // a sentence without its full stop
    const char* count;     // SQL: how many places break the rule
    const char* mend;      // SQL that makes it hold again, from what is told only once
};

// In the order in which they have to be mended.
std::span<const CatalogueRule> catalogueRules();

} // namespace local
