#include "platform/photokit/objects.h"

namespace platform {
static PHAsset recordOf(::PHAsset* asset) {
    PHAsset record;
    record.localIdentifier = textOf([asset localIdentifier]).value_or("");
    record.mediaType = static_cast<long>([asset mediaType]);
    record.pixelWidth = [asset pixelWidth];
    record.pixelHeight = [asset pixelHeight];
    if (NSDate* const date = [asset creationDate])
        record.creationDate = [date timeIntervalSince1970];
    record.isFavorite = [asset isFavorite];
    record.isHidden = [asset isHidden];
    record.object = retained(asset);
    return record;
}

::PHFetchOptions* nativeOptions(const PHFetchOptions& options) {
    ::PHFetchOptions* const result = [[[::PHFetchOptions alloc] init] autorelease];
    NSMutableArray* const descriptors = [NSMutableArray array];
    for (const auto& [key, ascending] : options.sortDescriptors)
        [descriptors addObject:[::NSSortDescriptor sortDescriptorWithKey:native(key)
                                                               ascending:ascending]];
    if ([descriptors count] != 0)
        [result setSortDescriptors:descriptors];
    if (const auto& predicate = options.predicate)
        [result setPredicate:[::NSPredicate predicateWithFormat:native(predicate->format),
                                                                native(predicate->argument)]];
    return result;
}

DEFINE_FETCH_RESULT(PHAsset)

PHFetchResult<PHAsset> fetchAssetsWithOptions(const PHFetchOptions& options) {
    return {retained([::PHAsset fetchAssetsWithOptions:nativeOptions(options)])};
}

PHFetchResult<PHAsset>
fetchAssetsWithLocalIdentifiers(const std::vector<std::string>& identifiers) {
    return {retained([::PHAsset fetchAssetsWithLocalIdentifiers:native(identifiers) options:nil])};
}

std::vector<PHAssetResource> assetResourcesForAsset(const PHAsset& asset) {
    std::vector<PHAssetResource> resources;
    for (::PHAssetResource* resource in [::PHAssetResource assetResourcesForAsset:native(asset)])
        resources.push_back({static_cast<long>([resource type]),
                             textOf([resource originalFilename]),
                             textOf([resource uniformTypeIdentifier]), retained(resource)});
    return resources;
}
} // namespace platform
