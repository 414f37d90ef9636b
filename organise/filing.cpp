#include "organise/filing.h"

#include "bridge/change_transaction.h"
#include "bridge/collections.h"
#include "bridge/diagnostic_log.h"
#include "platform/collection_change_requests.h"

#include <cstddef>

namespace {

bool moveIntoFolder(const platform::PHCollection& collection,
                    const platform::PHCollectionList& folder) {
    return performLoggedChanges("file into folder", [&] {
        if (const auto request = platform::changeRequestForCollectionList(folder))
            platform::addChildCollections(*request, {collection});
    });
}

bool isInsideFolder(const platform::PHCollection& collection,
                    const platform::PHCollectionList& folder) {
    const auto holders = platform::fetchCollectionListsContainingCollection(collection);
    const std::size_t total = holders.count();
    for (std::size_t index = 0; index < total; ++index) {
        const auto holder = holders.objectAtIndex(index);
        if (holder && holder->localIdentifier == folder.localIdentifier)
            return true;
    }
    return false;
}

} // namespace

bool fileCollectionIntoFolder(const std::optional<std::string>& collectionId,
                              const platform::PHCollectionList& folder) {
    if (!collectionId)
        return true;
    const auto collection = collectionWithIdentifier(*collectionId);
    if (!collection) {
        photosLogFormatted("file into folder: created collection not found: %s",
                           collectionId->c_str());
        return false;
    }
    if (!moveIntoFolder(*collection, folder))
        return false;
    if (isInsideFolder(*collection, folder))
        return true;
    photosLogFormatted("file into folder: Photos accepted the change but %s is NOT inside %s",
                       collectionId->c_str(), folder.localIdentifier.c_str());
    return false;
}
