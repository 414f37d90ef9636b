// Change requests for albums and folders. Like all change requests they may be made only inside
// the block given to performChangesAndWait and take effect when that transaction is done.
#pragma once

#include "platform/change_requests.h"
#include "platform/collection.h"

namespace platform {

// A request for a new album, or for changes to one.
struct PHAssetCollectionChangeRequest {
    std::shared_ptr<void> object;
};

PHAssetCollectionChangeRequest creationRequestForAssetCollectionWithTitle(const std::string& title);
std::optional<PHObjectPlaceholder>
placeholderForCreatedAssetCollection(const PHAssetCollectionChangeRequest& request);

// Nothing when the library makes no request for the collection.
std::optional<PHAssetCollectionChangeRequest>
changeRequestForAssetCollection(const PHAssetCollection& album);

void setTitle(const PHAssetCollectionChangeRequest& request, const std::string& title);

// Adds the assets behind those that the album holds, in their order; those that it holds already
// stay where they are.
void addAssets(const PHAssetCollectionChangeRequest& request, const PHFetchResult<PHAsset>& assets);
void addAssets(const PHAssetCollectionChangeRequest& request, const std::vector<PHAsset>& assets);

// Takes the assets out of the album; those that it does not hold do not matter.
void removeAssets(const PHAssetCollectionChangeRequest& request,
                  const PHFetchResult<PHAsset>& assets);

// Deletes the albums, never their assets.
void deleteAssetCollections(const PHFetchResult<PHAssetCollection>& albums);

// A request for a new folder, or for changes to one.
struct PHCollectionListChangeRequest {
    std::shared_ptr<void> object;
};

PHCollectionListChangeRequest creationRequestForCollectionListWithTitle(const std::string& title);
std::optional<PHObjectPlaceholder>
placeholderForCreatedCollectionList(const PHCollectionListChangeRequest& request);

// Nothing when the library makes no request for the folder.
std::optional<PHCollectionListChangeRequest>
changeRequestForCollectionList(const PHCollectionList& folder);

void setTitle(const PHCollectionListChangeRequest& request, const std::string& title);

// Moves the collections under the folder, behind what it holds.
void addChildCollections(const PHCollectionListChangeRequest& request,
                         const std::vector<PHCollection>& children);

// Deletes the folders and the collections inside them, never assets.
void deleteCollectionLists(const PHFetchResult<PHCollectionList>& folders);

} // namespace platform
