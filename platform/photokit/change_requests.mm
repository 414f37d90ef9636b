#include "platform/photokit/objects.h"

namespace platform {
PHAssetCreationRequest creationRequestForAsset() {
    return {retained([::PHAssetCreationRequest creationRequestForAsset])};
}

void addResourceWithType(const PHAssetCreationRequest& request, long resourceType,
                         const NSURL& fileURL, const PHAssetResourceCreationOptions& options) {
    ::PHAssetResourceCreationOptions* const creationOptions =
        [[[::PHAssetResourceCreationOptions alloc] init] autorelease];
    [creationOptions setShouldMoveFile:options.shouldMoveFile];
    if (options.originalFilename)
        [creationOptions setOriginalFilename:native(*options.originalFilename)];
    [native(request) addResourceWithType:static_cast<::PHAssetResourceType>(resourceType)
                                 fileURL:native(fileURL)
                                 options:creationOptions];
}

std::optional<PHObjectPlaceholder>
placeholderForCreatedAsset(const PHAssetCreationRequest& request) {
    return placeholderOf([native(request) placeholderForCreatedAsset]);
}
} // namespace platform
