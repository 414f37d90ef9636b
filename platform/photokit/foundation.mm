#include "platform/photokit/objects.h"

// The Objective-C runtime exports these; its public headers do not declare them.
extern "C" void* objc_autoreleasePoolPush(void);
extern "C" void objc_autoreleasePoolPop(void* pool);

namespace platform {
void* objc_autoreleasePoolPush() {
    return ::objc_autoreleasePoolPush();
}

void objc_autoreleasePoolPop(void* pool) {
    ::objc_autoreleasePoolPop(pool);
}
} // namespace platform
