#include "platform/photokit/objects.h"

namespace platform {
template <class Request>
static std::optional<Request> requestOrNothing(id object) {
    return object == nil ? std::nullopt : std::optional(Request{retained(object)});
}

PHAssetCollectionChangeRequest
creationRequestForAssetCollectionWithTitle(const std::string& title) {
    return {retained([::PHAssetCollectionChangeRequest
        creationRequestForAssetCollectionWithTitle:native(title)])};
}

std::optional<PHObjectPlaceholder>
placeholderForCreatedAssetCollection(const PHAssetCollectionChangeRequest& request) {
    return placeholderOf([native(request) placeholderForCreatedAssetCollection]);
}

std::optional<PHAssetCollectionChangeRequest>
changeRequestForAssetCollection(const PHAssetCollection& album) {
    return requestOrNothing<PHAssetCollectionChangeRequest>(
        [::PHAssetCollectionChangeRequest changeRequestForAssetCollection:native(album)]);
}

void setTitle(const PHAssetCollectionChangeRequest& request, const std::string& title) {
    [native(request) setTitle:native(title)];
}

void addAssets(const PHAssetCollectionChangeRequest& request,
               const PHFetchResult<PHAsset>& assets) {
    [native(request) addAssets:native(assets)];
}

void addAssets(const PHAssetCollectionChangeRequest& request, const std::vector<PHAsset>& assets) {
    [native(request) addAssets:native(assets)];
}

void removeAssets(const PHAssetCollectionChangeRequest& request,
                  const PHFetchResult<PHAsset>& assets) {
    [native(request) removeAssets:native(assets)];
}

void deleteAssetCollections(const PHFetchResult<PHAssetCollection>& albums) {
    [::PHAssetCollectionChangeRequest deleteAssetCollections:native(albums)];
}

PHCollectionListChangeRequest creationRequestForCollectionListWithTitle(const std::string& title) {
    return {retained(
        [::PHCollectionListChangeRequest creationRequestForCollectionListWithTitle:native(title)])};
}

std::optional<PHObjectPlaceholder>
placeholderForCreatedCollectionList(const PHCollectionListChangeRequest& request) {
    return placeholderOf([native(request) placeholderForCreatedCollectionList]);
}

std::optional<PHCollectionListChangeRequest>
changeRequestForCollectionList(const PHCollectionList& folder) {
    return requestOrNothing<PHCollectionListChangeRequest>(
        [::PHCollectionListChangeRequest changeRequestForCollectionList:native(folder)]);
}

void setTitle(const PHCollectionListChangeRequest& request, const std::string& title) {
    [native(request) setTitle:native(title)];
}

void addChildCollections(const PHCollectionListChangeRequest& request,
                         const std::vector<PHCollection>& children) {
    [native(request) addChildCollections:native(children)];
}

void deleteCollectionLists(const PHFetchResult<PHCollectionList>& folders) {
    [::PHCollectionListChangeRequest deleteCollectionLists:native(folders)];
}
} // namespace platform
