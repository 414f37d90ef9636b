// Asking for access to the photo library.
#include "bridge/delivery.h"
#include "bridge/entry_points.h"
#include "platform/photo_library.h"

namespace {

jint accessForStatus(long status) {
    switch (status) {
    case platform::PHAuthorizationStatusAuthorized:
        return 1;
    case platform::PHAuthorizationStatusLimited:
        return 2;
    default: // statuses that the platform may add later included
        return 0;
    }
}

} // namespace

jint Java_com_morrowfen_lumatrice_service_PhotosService_nativeAuthorize(JNIEnv*, jobject) noexcept {
    const auto access = makeDelivery<jint>(0);
    platform::requestAuthorizationForAccessLevel(
        platform::PHAccessLevelReadWrite,
        [access](long status) { deliver(*access, accessForStatus(status)); });
    return waitForDelivery(*access);
}
