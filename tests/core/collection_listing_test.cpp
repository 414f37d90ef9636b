// Albums, folders and smart albums by levels, what they are asked, and one album by pages.
#include "tests/core/support.h"

namespace {

using CollectionListing = CoreTest;

struct AlbumAssets : CoreTest {
    AlbumAssets() {
        library.albums["trip"] = albumTitled("trip", "Trip 😀");
        library.albums["recents"] = smartAlbumTitled("recents", "Recents");
        library.folders["years"] = folderTitled("years", "Years");
        library.assetsInAlbum["trip"] = {imageAsset("0"), imageAsset("1"), imageAsset("2")};
        library.assetsInAlbum["trip"][2]->isHidden = true;
    }
};
using CollectionQueries = AlbumAssets;

} // namespace

TEST_F(CollectionListing, OfTheTopLevelEndsWithTheSmartAlbumsThatHoldAssets) {
    library.topLevel = {albumTitled("a", "Trip"), folderTitled("f", "Years"), albumTitled("b", "")};
    library.assetsInAlbum["a"] = {imageAsset("1"), imageAsset("2")};
    library.children["f"] = {albumTitled("x", ""), folderTitled("y", ""), albumTitled("z", "")};
    library.smartAlbums = {smartAlbumTitled("empty", "Hidden"), std::nullopt,
                           smartAlbumTitled("s", "Recents"), smartAlbumTitled("t", std::nullopt)};
    library.assetsInAlbum["s"] = library.assetsInAlbum["t"] = {imageAsset("1")};
    EXPECT_EQ(CALL(ListAlbums, nullptr), R"([{"id":"a","title":"Trip","kind":"album","count":2},)"
                                         R"({"id":"f","title":"Years","kind":"folder","count":3},)"
                                         R"({"id":"b","title":"","kind":"album","count":0},)"
                                         R"({"id":"s","title":"Recents","kind":"smart","count":1},)"
                                         R"({"id":"t","title":"Untitled","kind":"smart","count":1})"
                                         "]");
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("fetch collections at the top level", "fetch assets in a, no options",
                            "fetch collections in f", "fetch assets in b, no options",
                            "fetch albums of type 2, subtype 9223372036854775807",
                            "fetch assets in empty, no options", "fetch assets in s, no options",
                            "fetch assets in t, no options"));
    EXPECT_THAT(home.logLines(), IsEmpty());
    for (const jni::Text& none :
         {jni::Text(""), jni::Text(jni::unreadable), jni::Text("\xED\xA0\xBD\xED\xB8\x80")})
        EXPECT_EQ(CALL(ListAlbums, none), CALL(ListAlbums, nullptr));
}

TEST_F(CollectionListing, OfAFolderIsItsDirectChildrenAlone) {
    library.folders["f"] = folderTitled("f", "Years");
    library.children["f"] = {std::nullopt, albumTitled("a", "\"Quoted\"\n"),
                             folderTitled("g", std::nullopt)};
    library.children["g"] = {albumTitled("deeper", "")};
    library.smartAlbums = {smartAlbumTitled("s", "Recents")};
    library.assetsInAlbum["s"] = {imageAsset("1")};
    EXPECT_EQ(CALL(ListAlbums, "f"),
              R"([{"id":"a","title":"\"Quoted\"\n","kind":"album","count":0},)"
              R"({"id":"g","title":"Untitled","kind":"folder","count":1}])");
}

TEST_F(AlbumAssets, OfAUsersAlbumAreNewestFirstAndTellWhatIsHidden) {
    const std::string rest = R"("isVideo":false,"width":0,"height":0,"createdMs":0,)"
                             R"("isFavorite":false,"isHidden":)";
    EXPECT_EQ(CALL(ListAlbumAssets, "trip", 2, 1), R"([{"id":"1","filename":"1.jpg",)" + rest +
                                                       R"(false},{"id":"2","filename":"2.jpg",)" +
                                                       rest + "true}]");
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("fetch albums trip", "fetch assets in trip, by creationDate descending",
                            "asset at 1", "asset at 2"));
    library.albums["trip"]->assetCollectionType = 3; // a type of which nothing is known
    CALL(ListAlbumAssets, "trip", 0, 0);
    EXPECT_EQ(CALL(ListAlbumAssets, "recents", 10, 0), "[]"); // keeps the library's order
    EXPECT_THAT(library.operations(),
                Contains("fetch assets in trip, by creationDate descending").Times(2));
    EXPECT_THAT(library.operations(), Contains("fetch assets in recents"));
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(AlbumAssets, ArePagedWithinTheAlbum) {
    EXPECT_EQ(CALL(ListAlbumAssets, "trip", 2, -5), CALL(ListAlbumAssets, "trip", 2, 0));
    EXPECT_EQ(CALL(ListAlbumAssets, "trip", 99, 2), CALL(ListAlbumAssets, "trip", 1, 2));
    EXPECT_EQ(CALL(ListAlbumAssets, "trip", -1, 0), "[]");
    EXPECT_EQ(CALL(ListAlbumAssets, "trip", 10, 3), "[]");
}

TEST_F(CollectionQueries, ParentIsTheFirstFolderThatHoldsTheCollection) {
    library.holders["trip"] = {folderTitled("inner", "Inner"), folderTitled("other", "Other")};
    library.holders["years"] = {folderTitled("outer", "Outer")};
    EXPECT_EQ(CALL(ParentCollection, "trip"), "inner");
    EXPECT_EQ(CALL(ParentCollection, "years"), "outer");
    library.holders.clear();
    EXPECT_EQ(CALL(ParentCollection, "trip"), "");
}

TEST_F(CollectionQueries, FoldersAreAskedOnlyForWhatIsNoAlbum) {
    EXPECT_EQ(CALL(CollectionTitle, "years"), "Years");
    EXPECT_THAT(operationsOfCall(), ElementsAre("fetch albums years", "fetch folders years"));
    library.folders["trip"] = folderTitled("trip", "A folder of the same name");
    EXPECT_EQ(CALL(CollectionTitle, "trip"), "Trip 😀");
    library.albums["trip"]->localizedTitle = std::nullopt;
    EXPECT_EQ(CALL(CollectionTitle, "trip"), "");
}

TEST_F(CollectionQueries, ContainsAsksTheAlbumForTheOneAsset) {
    EXPECT_EQ(CALL(AlbumContainsAsset, "trip", "2"), "1");
    EXPECT_THAT(
        operationsOfCall(),
        ElementsAre("fetch albums trip", "fetch assets in trip, where localIdentifier == %@ of 2"));
    EXPECT_EQ(CALL(AlbumContainsAsset, "trip", "3"), "0");
}
