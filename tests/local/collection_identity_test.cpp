// An album or folder that somebody has fetched and that is deleted meanwhile is gone for good: what
// is made after it never takes its place.
#include "tests/local/collections_support.h"

#include "platform/collection_change_requests.h"
#include "platform/photo_library.h"

#include <algorithm>

using namespace support;
using namespace platform;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

void remove(const std::string& identifier) {
    const auto albums = fetchAssetCollectionsWithLocalIdentifiers({identifier});
    const auto folders = fetchCollectionListsWithLocalIdentifiers({identifier});
    EXPECT_EQ(change([&] {
                  deleteAssetCollections(albums);
                  deleteCollectionLists(folders);
              }),
              "");
}

} // namespace

TEST(DeletedCollections, AreNotTakenForTheNextOnes) {
    const ScratchHome home;
    authorizationStatusForAccessLevel(2);
    addBareAssets(home, 2, 1000, 1000);
    const auto assets = listedIdentifiers();
    const auto shelf = newFolder("shelf");
    const auto gone = newAlbum("gone");
    const auto goneFetched = fetchAssetCollectionsWithLocalIdentifiers({gone});
    const auto goneAlbum = album(gone);
    const auto shelfList = folder(shelf);
    remove(gone);
    const auto next = newAlbum("next");
    ASSERT_EQ(add(next, assets), "");

    EXPECT_NE(change([&] {
                  addChildCollections(changeRequestForCollectionList(shelfList).value(),
                                      {goneAlbum});
              }),
              "");
    EXPECT_EQ(fetchCollectionsInCollectionList(folder(shelf)).count(), 0u);
    EXPECT_THAT(identifiers(fetchAssetsInAssetCollection(goneAlbum, nullptr)), IsEmpty());
    change([&] { deleteAssetCollections(goneFetched); });
    EXPECT_EQ(own(next).size(), 2u);
    expectConsistent(home);
}

TEST(DeletedCollections, LeaveNoPagesToTheNextOnes) {
    const ScratchHome home;
    authorizationStatusForAccessLevel(2);
    addBareAssets(home, 4000, 1000, 1000);
    const auto all = listedIdentifiers();
    const std::vector<std::string> newer(all.begin(), all.begin() + 2000);
    const std::vector<std::string> older(all.begin() + 2000, all.end());
    const PHFetchOptions options = newestFirst();
    const auto gone = newAlbum("gone");
    ASSERT_EQ(add(gone, newer), "");
    const auto goneAssets = fetchAssetsInAssetCollection(album(gone), &options);
    ASSERT_EQ(goneAssets.objectAtIndex(1500)->localIdentifier, newer[1500]);
    remove(gone);
    const auto next = newAlbum("next");
    ASSERT_EQ(add(next, older), "");
    const auto assets = fetchAssetsInAssetCollection(album(next), &options);
    EXPECT_EQ(assets.objectAtIndex(1500)->localIdentifier, older[1500]);
    EXPECT_EQ(newest(next), older);
}
