// The photo library as a whole: access to it, and changes to it.
#pragma once

#include "platform/foundation.h"

#include <functional>

namespace platform {

enum PHAuthorizationStatus : long {
    PHAuthorizationStatusNotDetermined = 0,
    PHAuthorizationStatusRestricted = 1,
    PHAuthorizationStatusDenied = 2,
    PHAuthorizationStatusAuthorized = 3,
    PHAuthorizationStatusLimited = 4,
};

enum PHAccessLevel : long {
    PHAccessLevelAddOnly = 1,
    PHAccessLevelReadWrite = 2,
};

// Asks for access and calls `handler` once with the PHAuthorizationStatus that holds now, on a
// thread of the library's choosing, possibly before this call has returned. May ask the user,
// for as long as the user takes.
void requestAuthorizationForAccessLevel(long accessLevel, std::function<void(long status)> handler);

// The PHAuthorizationStatus that holds now. Never asks the user.
long authorizationStatusForAccessLevel(long accessLevel);

// Runs `changeBlock`, which makes change requests, as one transaction on the shared photo
// library and waits, without limit, until the changes are durable or refused. Answers whether
// they are done. When they are not, nothing of them has been done, and `error` tells why if the
// library says so. The block runs once, on a thread of the library's choosing.
[[nodiscard]] bool performChangesAndWait(const std::function<void()>& changeBlock,
                                         std::optional<NSError>& error);

} // namespace platform
