#include "platform/local/picture_source.h"

#include "platform/local/asset_record.h"
#include "platform/local/guarded.h"
#include "platform/local/library.h"

namespace local {

std::optional<PictureSource> pictureSourceForAsset(const platform::PHAsset& asset) {
    if (!asset.object)
        return std::nullopt;
    const AssetRecord& record = recordOf(asset);
    PictureSource source;
    source.kind =
        record.media == platform::PHAssetMediaTypeVideo ? MediaKind::video : MediaKind::photo;
    source.contentKey = hexadecimal(record.hash);
    source.open = [storedAs = record.storedAs] {
        return orElse<UniqueFd>({},
                                [&] { return Library::open()->files().openOriginal(storedAs); });
    };
    // Opened when first asked for; stays open as long as a copy of the source lives.
    source.derivativesFolder = [folder = std::make_shared<UniqueFd>()] {
        if (!*folder)
            *folder =
                orElse<UniqueFd>({}, [] { return Library::open()->files().openDerivatives(); });
        return folder->get();
    };
    return source;
}

} // namespace local
