// Threads of the library's own.
#pragma once

#include <functional>

namespace local {

// Runs `work` on a new thread that takes none of the host's signals and that nobody waits for.
// False when there is no thread to be had: then nothing was run. `work` must not throw.
[[nodiscard]] bool startQuietThread(std::function<void()> work) noexcept;

} // namespace local
