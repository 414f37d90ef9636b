// Another process that changes a catalogue. SQL of the benchmark itself is run there: this
// process must not open a catalogue that the product has open, with a second copy of SQLite.
#pragma once

#include <filesystem>
#include <string>

namespace bench {

// Call once, before there are threads.
void startOtherProcess();

// Makes a copy of a catalogue beside it, in write-ahead logging, and answers its path. Never copy
// the file in this process: closing it would drop the locks that the product holds on it.
std::filesystem::path copyElsewhere(const std::filesystem::path& catalogue,
                                    const std::string& name);

// Runs the statements on the catalogue in the other process and waits until they are committed.
// Ends this program when they fail.
void runElsewhere(const std::filesystem::path& catalogue, const std::string& sql);

} // namespace bench
