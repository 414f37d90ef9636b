// Deleting assets. The library asks the user where it wants to; a refusal is told apart from a
// failure.
#include "bridge/arguments.h"
#include "bridge/call_scope.h"
#include "bridge/diagnostic_log.h"
#include "bridge/entry_points.h"
#include "platform/asset_change_requests.h"
#include "platform/photo_library.h"

#include <optional>
#include <string>
#include <vector>

namespace {

constexpr jint notStarted = -1;
constexpr jint refusedByUser = -2;
constexpr jint changeFailed = -3;

// Other domains give the same number other meanings.
bool isRefusalByUser(const platform::NSError& error) {
    return error.domain == platform::PHPhotosErrorDomain &&
           error.code == platform::PHPhotosErrorUserCancelled;
}

jint logWhyNotDeleted(const std::optional<platform::NSError>& error) {
    if (error && isRefusalByUser(*error)) {
        photosLogLine("delete cancelled at the system sheet");
        return refusedByUser;
    }
    photosLogFormatted("delete failed: %s", descriptionOrUnknown(error));
    return changeFailed;
}

jint deleteAssets(const std::vector<std::string>& identifiers) {
    const auto assets = platform::fetchAssetsWithLocalIdentifiers(identifiers);
    const auto total = static_cast<unsigned long>(assets.count()); // before they are gone
    if (total == 0)
        return notStarted;
    std::optional<platform::NSError> error;
    if (!platform::performChangesAndWait([&] { platform::deleteAssets(assets); }, error))
        return logWhyNotDeleted(error);
    photosLogFormatted("deleted %lu asset(s)", total);
    return static_cast<jint>(total);
}

} // namespace

jint Java_com_morrowfen_lumatrice_service_PhotosService_nativeDeleteAssets(
    JNIEnv* env, jobject, jobjectArray assetIds) noexcept {
    return inCallScope([&] {
        const std::vector<std::string> identifiers = stringArrayArgument(env, assetIds);
        return identifiers.empty() ? notStarted : deleteAssets(identifiers);
    });
}
