#include "platform/local/picture_source.h"

#include "platform/local/asset_record.h"
#include "platform/local/guarded.h"
#include "platform/local/library.h"

#include <algorithm>

namespace local {

namespace {

bool readPlace(std::int64_t n, std::string& storedAs, std::string& contentKey) {
    const ConnectionLease connection = Library::open()->connection();
    Statement row = connection->statement("SELECT stored_as, hash FROM asset WHERE n = ?1");
    if (!row.bind(1, n).step())
        return false;
    storedAs = row.text(0);
    ContentHash hash{};
    const auto bytes = row.blob(1);
    std::copy_n(bytes.begin(), std::min(bytes.size(), hash.size()), hash.begin());
    contentKey = hexadecimal(hash);
    return true;
}

} // namespace

std::optional<PictureSource> pictureSourceForAsset(const platform::PHAsset& asset) {
    if (!asset.object)
        return std::nullopt;
    const AssetRecord& record = recordOf(asset);
    PictureSource source;
    source.kind =
        record.media == platform::PHAssetMediaTypeVideo ? MediaKind::video : MediaKind::photo;
    std::string storedAs;
    if (!orElse(false, [&] { return readPlace(record.n, storedAs, source.contentKey); }))
        return std::nullopt;
    source.open = [storedAs] {
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
