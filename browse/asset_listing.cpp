// The whole library, counted and page by page.
#include "bridge/call_scope.h"
#include "bridge/diagnostic_log.h"
#include "bridge/entry_points.h"
#include "bridge/results.h"
#include "browse/asset_page.h"
#include "platform/asset.h"
#include "platform/photo_library.h"

namespace {

// The access is logged as the platform states it, so that an empty page can be told from a page
// that nobody was allowed to see.
void logPage(std::size_t total, PageBounds page) {
    const long status =
        platform::authorizationStatusForAccessLevel(platform::PHAccessLevelReadWrite);
    photosLogFormatted("listAssets total=%lu start=%lu end=%lu (auth=%d)",
                       static_cast<unsigned long>(total), static_cast<unsigned long>(page.start),
                       static_cast<unsigned long>(page.end), static_cast<int>(status));
}

} // namespace

jstring Java_com_morrowfen_lumatrice_service_PhotosService_nativeListAssets(JNIEnv* env, jobject,
                                                                            jint count,
                                                                            jint offset) noexcept {
    return inCallScope([&]() -> jstring {
        const platform::PHFetchOptions newestFirst{{{"creationDate", false}}};
        const auto assets = platform::fetchAssetsWithOptions(newestFirst);
        const std::size_t total = assets.count();
        const PageBounds page = boundsOfPage(total, count, offset);
        logPage(total, page);
        return stringResult(env, jsonOfPage(assets, page, AssetRecordVariant::withoutHidden));
    });
}

jint Java_com_morrowfen_lumatrice_service_PhotosService_nativeAssetCount(JNIEnv*,
                                                                         jobject) noexcept {
    return inCallScope([] {
        const auto assets = platform::fetchAssetsWithOptions(platform::PHFetchOptions());
        return static_cast<jint>(assets.count());
    });
}
