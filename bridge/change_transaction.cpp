#include "bridge/change_transaction.h"

#include "bridge/diagnostic_log.h"
#include "platform/photo_library.h"

namespace {

void logFailure(const char* action, const std::optional<platform::NSError>& error) {
    photosLogFormatted("%s failed: %s", action, descriptionOrUnknown(error));
}

} // namespace

bool performLoggedChanges(const char* action, const std::function<void()>& changeBlock) {
    std::optional<platform::NSError> error;
    const bool done = platform::performChangesAndWait(changeBlock, error);
    if (!done)
        logFailure(action, error);
    return done;
}

std::optional<std::string> performLoggedCreation(
    const char* action,
    const std::function<std::optional<platform::PHObjectPlaceholder>()>& changeBlock) {
    std::optional<std::string> newIdentifier;
    std::optional<platform::NSError> error;
    const bool done = platform::performChangesAndWait(
        [&] {
            if (auto placeholder = changeBlock())
                newIdentifier = std::move(placeholder->localIdentifier);
        },
        error);
    if (!done || !newIdentifier) {
        logFailure(action, error);
        return std::nullopt;
    }
    return newIdentifier;
}
