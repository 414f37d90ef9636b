// The border between the embedded library, which throws, and the facade, which does not.
#pragma once

#include "platform/local/library_error.h"

#include <utility>

namespace local {

// What `work` answers, or `otherwise` when it fails.
template <class Answer, class Work>
Answer orElse(Answer otherwise, Work&& work) noexcept {
    try {
        return std::forward<Work>(work)();
    } catch (const std::exception&) {
        return otherwise;
    }
}

} // namespace local
