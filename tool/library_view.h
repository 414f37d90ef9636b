// The library as the tool's commands address it. All of these throw LibraryError or Failure.
#pragma once

#include "platform/asset.h"
#include "platform/collection.h"
#include "tool/output.h"

#include <optional>
#include <string>
#include <vector>

namespace tool {

// Why there is no library at `path` yet, in a sentence; nothing when there is one, whole or not.
// Looking makes none.
std::optional<std::string> whyThereIsNoLibrary(const std::string& path);

// Both throw, with the reason, when there is no library to be had; fetches would only find nothing.
void requireLibrary();
void requireOrMakeLibrary();
// Throws when the owner lets nobody see the library: what fetches find is what hosts may see.
void requireAccess();

std::string accessName(std::int64_t status); // a PHAuthorizationStatus

// Tables show identifiers without their ending "/L0/001" or "/L0/040", and commands take them with
// or without it, in any case. The full ones are what hosts and JSON have.
std::string shownIdentifier(const std::string& identifier);
std::vector<std::string> assetIdentifiers(const std::vector<std::string>& typed); // each once
std::string albumIdentifier(const std::string& typed);

platform::PHAssetCollection albumWithIdentifier(const std::string& typed);

// The assets of an album, or without one those of the whole library, newest first. Smart albums
// have an order of their own.
platform::PHFetchResult<platform::PHAsset> assetsOf(const platform::PHAssetCollection* album);

// The true ones, where hosts may be handed others: with emoji.
std::string filenameOf(const platform::PHAsset& asset); // as imported
std::string titleOf(const platform::PHCollection& collection);
bool isEdited(const platform::PHAsset& asset);
bool isVideo(const platform::PHAsset& asset);
std::int64_t creationMilliseconds(const platform::PHAsset& asset);

} // namespace tool
