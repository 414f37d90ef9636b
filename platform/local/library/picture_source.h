// The file that an asset's picture is made from.
#pragma once

#include "platform/asset.h"
#include "platform/local/imaging/imaging.h"

#include <optional>

namespace local {

// The current version of the asset: the committed edit where there is one, else the original.
// Nothing when the asset has no such file. Never throws. The closures in the result may be called
// after this and the call it serves have returned, from another thread, at any time until the
// process ends.
std::optional<PictureSource> pictureSourceForAsset(const platform::PHAsset& asset);

} // namespace local
