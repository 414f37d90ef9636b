// Change requests. They may be made only inside the block given to performChangesAndWait and
// take effect when that transaction is done; until then a request only notes what is wanted.
#pragma once

#include "platform/foundation.h"

namespace platform {

// Stands for an object that the running transaction will create.
struct PHObjectPlaceholder {
    std::optional<std::string> localIdentifier;
};

struct PHAssetResourceCreationOptions {
    bool shouldMoveFile = false; // false: the file is copied and stays where it is
    std::optional<std::string> originalFilename;
};

// A request for one new asset.
struct PHAssetCreationRequest {
    std::shared_ptr<void> object;
};

PHAssetCreationRequest creationRequestForAsset();

// Adds a file as a resource of the new asset. The file is read when the transaction runs, after
// the block; one that cannot be used makes the transaction fail.
void addResourceWithType(const PHAssetCreationRequest& request, long resourceType,
                         const NSURL& fileURL, const PHAssetResourceCreationOptions& options);

std::optional<PHObjectPlaceholder>
placeholderForCreatedAsset(const PHAssetCreationRequest& request);

} // namespace platform
