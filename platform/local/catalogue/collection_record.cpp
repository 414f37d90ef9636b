#include "platform/local/catalogue/collection_record.h"

#include "platform/local/catalogue/handed_text.h"

#include <algorithm>

namespace local {

namespace {

constexpr std::string_view endingOf(CollectionKind kind) {
    return kind == kindAlbum ? "/L0/040" : "/L0/020";
}

} // namespace

const CollectionRecord& recordOf(const platform::PHAssetCollection& album) {
    return *static_cast<const CollectionRecord*>(album.object.get());
}

const CollectionRecord& recordOf(const platform::PHCollectionList& folder) {
    return *static_cast<const CollectionRecord*>(folder.object.get());
}

const CollectionRecord& recordOf(const platform::PHCollection& collection) {
    return std::visit([](const auto& c) -> const CollectionRecord& { return recordOf(c); },
                      collection);
}

std::string collectionIdentifier(const Uuid& uuid, CollectionKind kind) {
    return uppercaseText(uuid).append(endingOf(kind));
}

std::optional<Uuid> uuidOfCollectionIdentifier(std::string_view identifier, CollectionKind kind) {
    const std::string_view ending = endingOf(kind);
    if (!identifier.ends_with(ending))
        return std::nullopt;
    return uuidFromText(identifier.substr(0, identifier.size() - ending.size()));
}

CollectionRow collectionRow(const Statement& row, bool limitedAccess) {
    CollectionRow read;
    read.record.n = row.integer(0);
    read.uuid = row.bytes<Uuid>(1);
    read.kind = row.integer(2) == kindAlbum ? kindAlbum : kindFolder;
    if (!row.isNull(3))
        read.record.title = row.text(3);
    if (read.kind == kindFolder || !limitedAccess)
        read.record.knownCount = row.integer(4);
    return read;
}

platform::PHCollection collectionOf(std::shared_ptr<const CollectionRow> row) {
    const CollectionRow& read = *row;
    std::shared_ptr<const CollectionRecord> record(std::move(row), &read.record);
    std::string identifier = collectionIdentifier(read.uuid, read.kind);
    std::optional<std::string> title;
    if (record->title)
        title = handedText(*record->title);
    if (read.kind == kindFolder)
        return platform::PHCollectionList{std::move(identifier), std::move(title),
                                          std::move(record)};
    return platform::PHAssetCollection{std::move(identifier), std::move(title),
                                       platform::PHAssetCollectionTypeAlbum, std::move(record)};
}

platform::PHAssetCollection collectionOf(const SmartAlbum& album,
                                         std::optional<std::int64_t> knownCount) {
    const auto record = std::make_shared<CollectionRecord>();
    record->smart = &album;
    record->knownCount = knownCount;
    record->title = album.title;
    return {identifierOf(album), album.title, platform::PHAssetCollectionTypeSmartAlbum, record};
}

} // namespace local
