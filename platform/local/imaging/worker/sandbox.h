// What the imaging process gives up before it sees a stranger's file.
#pragma once

namespace local::imaging {

// Limits that hold from the start: memory, core dumps, descriptors, the size of files.
void limitResources();

// Lets the process use some more seconds of processor time, counted from now.
void renewProcessorTime();

// Gives up files, network, programs and processes for good. False when the system does not grant
// it: then nothing may be decoded.
[[nodiscard]] bool enterSandbox();

// Tries what the sandbox forbids, each in a child process of its own, and prints a line for each.
// True when all of it was refused. Serves the tests ("photos-kit-imaging --probe-sandbox").
bool probeSandbox();

} // namespace local::imaging
