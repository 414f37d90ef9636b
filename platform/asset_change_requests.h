// Change requests for assets that exist, and their deletion. Like all change requests they may be
// made only inside the block given to performChangesAndWait and take effect, all or none, when
// that transaction is done.
#pragma once

#include "platform/asset.h"
#include "platform/change_requests.h"
#include "platform/content_editing.h"

namespace platform {

// A request for changes to one asset. An asset that is gone, or that may not be changed, makes the
// transaction fail.
struct PHAssetChangeRequest {
    std::shared_ptr<void> object;
};

PHAssetChangeRequest changeRequestForAsset(const PHAsset& asset);

// Each sets one mark, whatever it was, and leaves the other alone.
void setFavorite(const PHAssetChangeRequest& request, bool favorite);
void setHidden(const PHAssetChangeRequest& request, bool hidden);

// Makes the content at the output's renderedContentURL the asset's current version, with the
// output's adjustment data beside it; the original stays, and the edit can be reverted. The file is
// read when the transaction runs, after the block. Content that is missing or cannot be used, or an
// output without adjustment data, makes the transaction fail.
void setContentEditingOutput(const PHAssetChangeRequest& request,
                             const PHContentEditingOutput& output);

// Deletes the assets. The library may ask the user, for as long as the user takes, while
// performChangesAndWait waits; a refusal fails the transaction with PHPhotosErrorDomain and
// PHPhotosErrorUserCancelled. Whether a deletion can be undone is the library's matter.
void deleteAssets(const PHFetchResult<PHAsset>& assets);

} // namespace platform
