// The favourite and hidden marks. The wanted value is written whatever an asset has, so the result
// counts assets that had it already.
#include "bridge/arguments.h"
#include "bridge/call_scope.h"
#include "bridge/change_transaction.h"
#include "bridge/entry_points.h"
#include "platform/asset_change_requests.h"

#include <cstddef>
#include <string>
#include <vector>

namespace {

enum class Flag { hidden, favorite };

constexpr jint notStarted = -1;
constexpr jint changeFailed = -2;

void requestFlag(const platform::PHAsset& asset, Flag flag, bool wanted) {
    const auto request = platform::changeRequestForAsset(asset);
    if (flag == Flag::favorite)
        platform::setFavorite(request, wanted);
    else
        platform::setHidden(request, wanted);
}

jint setAssetFlag(JNIEnv* env, jobjectArray assetIds, jboolean wanted, Flag flag) {
    const std::vector<std::string> identifiers = stringArrayArgument(env, assetIds);
    if (identifiers.empty())
        return notStarted;
    const auto assets = platform::fetchAssetsWithLocalIdentifiers(identifiers);
    const std::size_t total = assets.count();
    if (total == 0)
        return notStarted;
    const bool done = performLoggedChanges("set asset flag", [&] {
        for (std::size_t index = 0; index < total; ++index) {
            if (const auto asset = assets.objectAtIndex(index))
                requestFlag(*asset, flag, wanted == JNI_TRUE);
        }
    });
    return done ? static_cast<jint>(total) : changeFailed;
}

} // namespace

jint Java_com_morrowfen_lumatrice_service_PhotosService_nativeSetFavorite(
    JNIEnv* env, jobject, jobjectArray assetIds, jboolean favorite) noexcept {
    return inCallScope([&] { return setAssetFlag(env, assetIds, favorite, Flag::favorite); });
}

jint Java_com_morrowfen_lumatrice_service_PhotosService_nativeSetHidden(JNIEnv* env, jobject,
                                                                        jobjectArray assetIds,
                                                                        jboolean hidden) noexcept {
    return inCallScope([&] { return setAssetFlag(env, assetIds, hidden, Flag::hidden); });
}
