#include "platform/photo_library.h"

#include "platform/photokit/objects.h"

namespace platform {
void requestAuthorizationForAccessLevel(long accessLevel,
                                        std::function<void(long status)> handler) {
    [PHPhotoLibrary requestAuthorizationForAccessLevel:static_cast<::PHAccessLevel>(accessLevel)
                                               handler:^(::PHAuthorizationStatus status) {
                                                 handler(static_cast<long>(status));
                                               }];
}

long authorizationStatusForAccessLevel(long accessLevel) {
    const auto level = static_cast<::PHAccessLevel>(accessLevel);
    return static_cast<long>([PHPhotoLibrary authorizationStatusForAccessLevel:level]);
}

// The error is handed on whatever the answer is: one of the core's changes goes by it alone.
bool performChangesAndWait(const std::function<void()>& changeBlock,
                           std::optional<NSError>& error) {
    const std::function<void()> changes = changeBlock; // a block would capture only a reference
    ::NSError* nativeError = nil;
    const BOOL done = [[PHPhotoLibrary sharedPhotoLibrary]
        performChangesAndWait:^{
          changes();
        }
                        error:&nativeError];
    error = errorOf(nativeError);
    return done;
}
} // namespace platform
