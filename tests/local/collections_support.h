// Short ways to make, find, change and check albums and folders.
#pragma once

#include "tests/local/support.h"

#include "platform/collection.h"

#include <functional>
#include <string>
#include <vector>

namespace support {

// Runs the changes as one transaction; answers why it was refused, or nothing when it was done.
std::string change(const std::function<void()>& changes);

// Make an empty one at the top level and answer its identifier.
std::string newAlbum(const std::string& title);
std::string newFolder(const std::string& title);

// What the identifier names; it must name one.
platform::PHAssetCollection album(const std::string& identifier);
platform::PHCollectionList folder(const std::string& identifier);
platform::PHCollection collection(const std::string& identifier);

// As `change`.
std::string file(const std::string& child, const std::string& parent);
std::string add(const std::string& to, const std::vector<std::string>& assets);

std::vector<std::string> identifiers(const platform::PHFetchResult<platform::PHAsset>& assets);

// The assets of an album: newest first, and in the order in which they were added.
platform::PHFetchOptions newestFirst();
std::vector<std::string> newest(const std::string& of);
std::vector<std::string> own(const std::string& of);

// What is kept beside the rows agrees with them, every collection is reached from the top exactly
// once, and SQLite finds nothing wrong.
void expectConsistent(const ScratchHome& home);

} // namespace support
