// Putting an album or a folder into a folder.
#pragma once

#include "platform/collection.h"

#include <optional>
#include <string>

// Moves the album or folder under the folder, in a transaction of its own, and then reads the
// library back, because it may accept the change without carrying it out. Answers whether the
// collection is inside the folder; logs why if not. No identifier means nothing to file: true,
// and the library is not touched.
bool fileCollectionIntoFolder(const std::optional<std::string>& collectionId,
                              const platform::PHCollectionList& folder);
