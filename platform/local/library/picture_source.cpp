#include "platform/local/library/picture_source.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/library/library.h"
#include "platform/local/system/guarded.h"

#include <algorithm>

namespace local {

namespace {

struct Place {
    Stored kind = Stored::original;
    std::string storedAs;
    std::string contentKey;
};

std::optional<Place> readPlace(std::int64_t n) {
    const ConnectionLease connection = Library::open()->connection();
    Statement row = connection->statement(
        "SELECT edit.asset IS NOT NULL, ifnull(edit.stored_as, asset.stored_as), "
        "ifnull(edit.hash, asset.hash) FROM asset LEFT JOIN edit ON edit.asset = asset.n "
        "WHERE asset.n = ?1");
    if (!row.bind(1, n).step())
        return std::nullopt;
    return Place{row.integer(0) != 0 ? Stored::render : Stored::original, std::string(row.text(1)),
                 hexadecimal(row.bytes<ContentHash>(2))};
}

} // namespace

std::optional<PictureSource> pictureSourceForAsset(const platform::PHAsset& asset) {
    if (!asset.object)
        return std::nullopt;
    const AssetRecord& record = recordOf(asset);
    PictureSource source;
    source.kind =
        record.media == platform::PHAssetMediaTypeVideo ? MediaKind::video : MediaKind::photo;
    const auto place = orElse<std::optional<Place>>({}, [&] { return readPlace(record.n); });
    if (!place)
        return std::nullopt;
    source.contentKey = place->contentKey;
    source.open = [kind = place->kind, name = place->storedAs] {
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
