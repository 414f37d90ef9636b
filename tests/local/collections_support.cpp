#include "tests/local/collections_support.h"

#include "platform/collection_change_requests.h"
#include "platform/local/catalogue/catalogue_rules.h"
#include "platform/photo_library.h"

namespace support {

using namespace platform;

std::string change(const std::function<void()>& changes) {
    std::optional<NSError> error;
    if (performChangesAndWait(changes, error))
        return "";
    return error ? error->localizedDescription.value_or("no sentence") : "no error";
}

std::string newAlbum(const std::string& title) {
    std::string identifier;
    EXPECT_EQ(change([&] {
                  const auto request = creationRequestForAssetCollectionWithTitle(title);
                  identifier = *placeholderForCreatedAssetCollection(request)->localIdentifier;
              }),
              "");
    return identifier;
}

std::string newFolder(const std::string& title) {
    std::string identifier;
    EXPECT_EQ(change([&] {
                  const auto request = creationRequestForCollectionListWithTitle(title);
                  identifier = *placeholderForCreatedCollectionList(request)->localIdentifier;
              }),
              "");
    return identifier;
}

PHAssetCollection album(const std::string& identifier) {
    return fetchAssetCollectionsWithLocalIdentifiers({identifier}).objectAtIndex(0).value();
}

PHCollectionList folder(const std::string& identifier) {
    return fetchCollectionListsWithLocalIdentifiers({identifier}).objectAtIndex(0).value();
}

PHCollection collection(const std::string& identifier) {
    const auto albums = fetchAssetCollectionsWithLocalIdentifiers({identifier});
    if (albums.count() > 0)
        return albums.objectAtIndex(0).value();
    return folder(identifier);
}

std::string file(const std::string& child, const std::string& parent) {
    const PHCollection collections = collection(child);
    const PHCollectionList list = folder(parent);
    return change(
        [&] { addChildCollections(changeRequestForCollectionList(list).value(), {collections}); });
}

std::string add(const std::string& to, const std::vector<std::string>& assets) {
    const auto list = album(to);
    const auto found = fetchAssetsWithLocalIdentifiers(assets);
    return change([&] { addAssets(changeRequestForAssetCollection(list).value(), found); });
}

std::vector<std::string> identifiers(const PHFetchResult<PHAsset>& assets) {
    std::vector<std::string> all;
    for (std::size_t i = 0; i < assets.count(); ++i)
        all.push_back(assets.objectAtIndex(i).value().localIdentifier);
    EXPECT_FALSE(assets.objectAtIndex(assets.count()));
    return all;
}

PHFetchOptions newestFirst() {
    return {{{"creationDate", false}}, std::nullopt};
}

std::vector<std::string> newest(const std::string& of) {
    const PHFetchOptions options = newestFirst();
    return identifiers(fetchAssetsInAssetCollection(album(of), &options));
}

std::vector<std::string> own(const std::string& of) {
    return identifiers(fetchAssetsInAssetCollection(album(of), nullptr));
}

void expectConsistent(const ScratchHome& home) {
    EXPECT_EQ(sqlText(home, "PRAGMA integrity_check"), "ok");
    EXPECT_EQ(sqlInteger(home, "SELECT count(*) FROM pragma_foreign_key_check"), 0);
    for (const local::CatalogueRule& rule : local::catalogueRules())
        EXPECT_EQ(sqlInteger(home, rule.count), 0) << rule.violation;
}

} // namespace support
