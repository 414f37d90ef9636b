// The scope of one call from the host. The embedded library makes no temporary objects; what lives
// for a call is its view of which library it is about.
#include "platform/foundation.h"

#include "platform/local/library/library.h"

namespace platform {

void* objc_autoreleasePoolPush() {
    local::Library::beginCall();
    return nullptr;
}

void objc_autoreleasePoolPop(void*) {
    local::Library::endCall();
}

} // namespace platform
