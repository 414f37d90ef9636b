#include "platform/local/library/picture_source.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/library/library.h"
#include "platform/local/library/stored_bytes.h"
#include "platform/local/system/guarded.h"

#include <algorithm>

namespace local {

std::optional<PictureSource> pictureSourceForAsset(const platform::PHAsset& asset) {
    if (!asset.object)
        return std::nullopt;
    const AssetRecord& record = recordOf(asset);
    PictureSource source;
    source.kind =
        record.media == platform::PHAssetMediaTypeVideo ? MediaKind::video : MediaKind::photo;
    const auto file = orElse<std::optional<StoredFile>>({}, [&] { return currentFile(record.n); });
    if (!file)
        return std::nullopt;
    source.contentKey = hexadecimal(file->hash);
    source.open = [kind = file->kind, name = file->name] {
        return orElse<UniqueFd>({}, [&] { return Library::open()->files().open(kind, name); });
    };
    source.derivativesFolder = [] {
        return orElse<std::shared_ptr<const UniqueFd>>(
            {}, [] { return Library::open()->files().derivatives(); });
    };
    source.derivativesRoom = [] {
        return orElse<std::optional<std::uint64_t>>({}, [] {
            return std::optional(static_cast<std::uint64_t>(
                Library::open()->connection()->integer("SELECT derivatives_room FROM library")));
        });
    };
    return source;
}

} // namespace local
