// Albums, smart albums and folders as the host names them: by their identifiers alone.
#pragma once

#include "platform/collection.h"

#include <optional>
#include <string>

// The first of what a fetch found; nothing when it found nothing, or has no object there.
template <class Record>
std::optional<Record> firstObject(const platform::PHFetchResult<Record>& found) {
    if (found.count() == 0)
        return std::nullopt;
    return found.objectAtIndex(0);
}

// The album or smart album; nothing for a folder.
std::optional<platform::PHAssetCollection> albumWithIdentifier(const std::string& identifier);

std::optional<platform::PHCollectionList> folderWithIdentifier(const std::string& identifier);

// Either of them. Folders are asked only when no album has the identifier.
std::optional<platform::PHCollection> collectionWithIdentifier(const std::string& identifier);

// The one that the library maintains itself and that no method changes.
bool isSmartAlbum(const platform::PHAssetCollection& album);

const std::optional<std::string>& titleOfCollection(const platform::PHCollection& collection);
