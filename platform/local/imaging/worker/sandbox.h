// What the imaging process gives up before it sees a stranger's file.
#pragma once

namespace local::imaging {

// Limits that hold from the start and for good: memory, processor time, core dumps, descriptors,
// the size of files.
void limitResources();

// Whether so much of the processor time is used up that a fresh process should take the next file.
bool isWornOut();

// Gives up files, network, programs and processes for good. False when the system does not grant
// it: then nothing may be decoded.
[[nodiscard]] bool enterSandbox();

// Tries what the sandbox forbids, each in a child process of its own, and prints a line for each.
// True when all of it was refused. Serves the tests ("photos-kit-imaging --probe-sandbox").
bool probeSandbox();

} // namespace local::imaging
