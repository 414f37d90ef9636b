#include "platform/photokit/objects.h"

namespace platform {
PHAssetChangeRequest changeRequestForAsset(const PHAsset& asset) {
    return {retained([::PHAssetChangeRequest changeRequestForAsset:native(asset)])};
}

void setFavorite(const PHAssetChangeRequest& request, bool favorite) {
    [native(request) setFavorite:favorite];
}

void setHidden(const PHAssetChangeRequest& request, bool hidden) {
    [native(request) setHidden:hidden];
}

void setContentEditingOutput(const PHAssetChangeRequest& request,
                             const PHContentEditingOutput& output) {
    [native(request) setContentEditingOutput:native(output)];
}

void deleteAssets(const PHFetchResult<PHAsset>& assets) {
    [::PHAssetChangeRequest deleteAssets:native(assets)];
}
} // namespace platform
