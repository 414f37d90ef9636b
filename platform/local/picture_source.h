// Where the pictures of an asset come from.
#pragma once

#include "platform/asset.h"
#include "platform/local/imaging/imaging.h"

#include <optional>

namespace local {

// The file that shows the asset as it is now; nothing for an asset that this library did not
// fetch.
std::optional<PictureSource> pictureSourceForAsset(const platform::PHAsset& asset);

} // namespace local
