// This library makes no temporary objects that would need a scope: values own what they hold.
#include "platform/foundation.h"

namespace platform {

void* objc_autoreleasePoolPush() {
    return nullptr;
}

void objc_autoreleasePoolPop(void*) {}

} // namespace platform
