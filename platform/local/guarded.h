// The border between the embedded library, which throws, and the facade, which does not.
#pragma once

#include "platform/local/library_error.h"

#include <utility>

namespace local {

// Within a change block: refuses the whole change with what is being handled (a catch block only).
// What a block asked for and could not be told must not be counted as done. Nothing elsewhere.
void refuseChangeUnderWay() noexcept;

// What `work` answers, or `otherwise` when it fails; a failure within a change block refuses the
// change.
template <class Answer, class Work>
Answer orElse(Answer otherwise, Work&& work) noexcept {
    try {
        return std::forward<Work>(work)();
    } catch (const std::exception&) {
        refuseChangeUnderWay();
        return otherwise;
    }
}

} // namespace local
