// The border between the embedded library, which throws, and the facade, which does not.
#pragma once

#include "platform/local/system/library_error.h"

#include <optional>
#include <utility>

namespace local {

// While a change block runs on this thread: where the first failure of what it asks for is kept, so
// that what it could not be told is not counted as done. Answers what was there before; null:
// failures are not kept.
std::optional<platform::NSError>* keepFailuresIn(std::optional<platform::NSError>* place) noexcept;

// Keeps what is being handled (in a catch block only), if anybody wants it kept.
void keepFailure() noexcept;

// What `work` answers, or `otherwise` when it fails; within a change block the failure is
// kept, and refuses the change.
template <class Answer, class Work>
Answer orElse(Answer otherwise, Work&& work) noexcept {
    try {
        return std::forward<Work>(work)();
    } catch (const std::exception&) {
        keepFailure();
        return otherwise;
    }
}

} // namespace local
