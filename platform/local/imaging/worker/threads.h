// The threads of the decoders' libraries. All are started before the sandbox closes, since nothing
// can be started inside it: pthread_create, pthread_join and pthread_detach of this program stand
// in front of the C library's for everything that is loaded into it, and hand the work to them.
#pragma once

namespace local::imaging {

// Call once. False when the system does not grant so many. Inside the sandbox pthread_create then
// answers EAGAIN when all of them are at work.
[[nodiscard]] bool startThreads();

// How many of them libvips, and with it libjxl, may set to one picture.
inline constexpr int kMostDecodingThreads = 4;

} // namespace local::imaging
