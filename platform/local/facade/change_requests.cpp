#include "platform/change_requests.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/change/change_transaction.h"
#include "platform/local/system/guarded.h"

namespace platform {

using local::AssetCreation;

PHAssetCreationRequest creationRequestForAsset() {
    auto* transaction = local::ChangeTransaction::current();
    if (!transaction)
        return {};
    return local::orElse<PHAssetCreationRequest>({}, [&] {
        auto creation = std::make_shared<AssetCreation>();
        creation->uuid = local::randomUuid();
        transaction->assetCreations.push_back(creation);
        return PHAssetCreationRequest{creation};
    });
}

void addResourceWithType(const PHAssetCreationRequest& request, long resourceType,
                         const NSURL& fileURL, const PHAssetResourceCreationOptions& options) {
    if (!request.object)
        return;
    auto& creation = *static_cast<AssetCreation*>(request.object.get());
    creation.resourceType = resourceType;
    creation.sourcePath = fileURL.path;
    creation.originalFilename = options.originalFilename.value_or("");
}

std::optional<PHObjectPlaceholder>
placeholderForCreatedAsset(const PHAssetCreationRequest& request) {
    if (!request.object)
        return std::nullopt;
    const auto& creation = *static_cast<const AssetCreation*>(request.object.get());
    return PHObjectPlaceholder{local::assetIdentifier(creation.uuid)};
}

} // namespace platform
