// Albums, folders and smart albums by levels, and the assets of one album by pages.
#include "tests/core/support.h"

using scripted::albumTitled;
using scripted::folderTitled;
using scripted::imageAsset;
using scripted::smartAlbumTitled;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct CollectionListing : CoreTest {
    std::string list(jstring parent) {
        return jni::Environment::textOf(
            Java_com_morrowfen_lumatrice_service_PhotosService_nativeListAlbums(jvm.env(), nullptr,
                                                                                parent));
    }
};

struct AlbumAssetListing : CoreTest {
    AlbumAssetListing() {
        library.albums["trip"] = albumTitled("trip", "Trip");
        library.albums["recents"] = smartAlbumTitled("recents", "Recents");
        library.assetsInAlbum["trip"] = {imageAsset("0"), imageAsset("1"), imageAsset("2")};
        library.assetsInAlbum["trip"][2]->isHidden = true;
    }

    std::string list(jstring album, jint count = 10, jint offset = 0) {
        return jni::Environment::textOf(
            Java_com_morrowfen_lumatrice_service_PhotosService_nativeListAlbumAssets(
                jvm.env(), nullptr, album, count, offset));
    }
};

const std::string fieldsOfAll = R"("isVideo":false,"width":0,"height":0,"createdMs":0,)"
                                R"("isFavorite":false,"isHidden":)";

} // namespace

TEST_F(CollectionListing, OfTheTopLevelEndsWithTheSmartAlbumsThatHoldAssets) {
    library.topLevel = {albumTitled("a", "Trip"), folderTitled("f", "Years"), albumTitled("b", "")};
    library.assetsInAlbum["a"] = {imageAsset("1"), imageAsset("2")};
    library.children["f"] = {albumTitled("x", ""), folderTitled("y", ""), albumTitled("z", "")};
    library.smartAlbums = {smartAlbumTitled("empty", "Hidden"), smartAlbumTitled("s", "Recents"),
                           smartAlbumTitled("t", std::nullopt)};
    library.assetsInAlbum["s"] = library.assetsInAlbum["t"] = {imageAsset("1")};
    EXPECT_EQ(list(nullptr), R"([{"id":"a","title":"Trip","kind":"album","count":2},)"
                             R"({"id":"f","title":"Years","kind":"folder","count":3},)"
                             R"({"id":"b","title":"","kind":"album","count":0},)"
                             R"({"id":"s","title":"Recents","kind":"smart","count":1},)"
                             R"({"id":"t","title":"Untitled","kind":"smart","count":1}])");
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("fetch collections at the top level", "fetch assets in a, no options",
                            "fetch collections in f", "fetch assets in b, no options",
                            "fetch albums of type 2, subtype 9223372036854775807",
                            "fetch assets in empty, no options", "fetch assets in s, no options",
                            "fetch assets in t, no options"));
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(CollectionListing, OfNoUsableTextIsTheTopLevel) {
    library.smartAlbums = {smartAlbumTitled("s", "\"Quoted\"\n")};
    library.assetsInAlbum["s"] = {imageAsset("1")};
    const std::string topLevel = R"([{"id":"s","title":"\"Quoted\"\n","kind":"smart","count":1}])";
    EXPECT_EQ(list(nullptr), topLevel);
    EXPECT_EQ(list(jvm.string("")), topLevel);
    EXPECT_EQ(list(jvm.stringWithoutCharacters()), topLevel);
    EXPECT_EQ(list(jvm.string("\xED\xA0\xBD\xED\xB8\x80")), topLevel);
}

TEST_F(CollectionListing, OfAFolderIsItsDirectChildrenAlone) {
    library.folders["f"] = folderTitled("f", "Years");
    library.children["f"] = {std::nullopt, albumTitled("a", std::nullopt),
                             folderTitled("g", std::nullopt)};
    library.children["g"] = {albumTitled("deeper", "")};
    library.smartAlbums = {std::nullopt, smartAlbumTitled("s", "Recents")};
    library.assetsInAlbum["s"] = {imageAsset("1")};
    EXPECT_EQ(list(jvm.string("f")), R"([{"id":"a","title":"Untitled","kind":"album","count":0},)"
                                     R"({"id":"g","title":"Untitled","kind":"folder","count":1}])");
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("fetch folders f", "fetch collections in f",
                            "fetch assets in a, no options", "fetch collections in g"));
}

TEST_F(CollectionListing, OfAnythingButAFolderIsEmpty) {
    library.smartAlbums = {smartAlbumTitled("s", "Recents")};
    library.assetsInAlbum["s"] = {imageAsset("1")};
    library.albums["a"] = albumTitled("a", "Trip");
    library.folders["nil"] = std::nullopt;
    EXPECT_EQ(list(jvm.string("a")), "[]");
    EXPECT_EQ(list(jvm.string("nil")), "[]");
    EXPECT_EQ(jvm.charactersHeld, 0);
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(AlbumAssetListing, OfAUsersAlbumIsNewestFirstAndTellsWhatIsHidden) {
    EXPECT_EQ(list(jvm.string("trip"), 2, 1), R"([{"id":"1","filename":"1.jpg",)" + fieldsOfAll +
                                                  R"(false},{"id":"2","filename":"2.jpg",)" +
                                                  fieldsOfAll + "true}]");
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("fetch albums trip", "fetch assets in trip, by creationDate descending",
                            "asset at 1", "asset at 2"));
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(AlbumAssetListing, OfASmartAlbumKeepsTheLibrarysOrder) {
    EXPECT_EQ(list(jvm.string("recents")), "[]");
    EXPECT_THAT(operationsOfCall(), ElementsAre("fetch albums recents", "fetch assets in recents"));
}

TEST_F(AlbumAssetListing, SortsAlbumsOfTypesItDoesNotKnow) {
    library.albums["trip"]->assetCollectionType = 3;
    list(jvm.string("trip"), 0);
    EXPECT_THAT(
        operationsOfCall(),
        ElementsAre("fetch albums trip", "fetch assets in trip, by creationDate descending"));
}

TEST_F(AlbumAssetListing, ClampsThePageToTheAlbum) {
    const jstring trip = jvm.string("trip");
    EXPECT_EQ(list(trip, 2, -5), list(trip, 2, 0));
    EXPECT_EQ(list(trip, 99, 2), list(trip, 1, 2));
    EXPECT_EQ(list(trip, -1, 0), "[]");
    EXPECT_EQ(list(trip, 10, 3), "[]");
}

TEST_F(AlbumAssetListing, OfAnythingButAnAlbumIsEmpty) {
    library.folders["f"] = folderTitled("f", "Years");
    library.albums["nil"] = std::nullopt;
    EXPECT_EQ(list(nullptr), "[]");
    EXPECT_EQ(list(jvm.stringWithoutCharacters()), "[]");
    EXPECT_THAT(library.operations(), nothingInScopes());
    EXPECT_EQ(list(jvm.string("")), "[]");
    EXPECT_EQ(list(jvm.string("f")), "[]");
    EXPECT_EQ(list(jvm.string("nil")), "[]");
    EXPECT_THAT(home.logLines(), IsEmpty());
}
