// Transactions whose failure is one line in the diagnostic log.
#pragma once

#include "platform/change_requests.h"

#include <functional>
#include <optional>
#include <string>

// Runs the block as one transaction and answers whether its changes are done. When they are not,
// logs "<action> failed: " and why.
[[nodiscard]] bool performLoggedChanges(const char* action,
                                        const std::function<void()>& changeBlock);

// The same for a block that requests one new object and answers what stands for it. Answers the
// object's identifier; a transaction that is done but made nothing that can be named is a failure.
std::optional<std::string> performLoggedCreation(
    const char* action,
    const std::function<std::optional<platform::PHObjectPlaceholder>()>& changeBlock);
