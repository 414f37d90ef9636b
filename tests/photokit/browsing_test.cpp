// Access, listings and questions, through the entry points.
#include "tests/photokit/support.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

struct Browsing : PhotoKitTest {
    Browsing() {
        script.assets = {
            {.id = "old", .created = -1.5, .resources = {{.type = 1, .name = "old.jpg"}}},
            {.id = "new",
             .mediaType = 2,
             .width = 1920,
             .height = 1080,
             .created = 100.0,
             .favorite = true,
             .resources = {{.type = 7}, {.type = 2, .name = "nü\"w.mov"}}},
            {.id = "undated-asset", .hidden = true}};
        script.collections = {
            {.id = "folder", .title = "Folder", .type = 0},
            {.id = "trip", .title = "Trip", .assets = {"old", "new"}},
            {.id = "inner", .type = 0, .parent = "folder"},
            {.id = "inside", .title = std::string("In\0side", 7), .parent = "folder"},
            {.id = "recents", .title = "Recents", .type = 2, .assets = {"new"}},
            {.id = "empty", .title = "Empty", .type = 2}};
    }

    std::string list(jint count, jint offset) {
        return jvm.textOf(Java_com_morrowfen_lumatrice_service_PhotosService_nativeListAssets(
            jvm.env(), nullptr, count, offset));
    }

    std::string albums(const std::string& parent) {
        return jvm.textOf(Java_com_morrowfen_lumatrice_service_PhotosService_nativeListAlbums(
            jvm.env(), nullptr, jvm.string(parent)));
    }

    std::string assetsOf(const std::string& album) {
        return jvm.textOf(Java_com_morrowfen_lumatrice_service_PhotosService_nativeListAlbumAssets(
            jvm.env(), nullptr, jvm.string(album), 9, 0));
    }

    std::string parentOf(const std::string& id) {
        return jvm.textOf(Java_com_morrowfen_lumatrice_service_PhotosService_nativeParentCollection(
            jvm.env(), nullptr, jvm.string(id)));
    }

    jstring titleOf(const std::string& id) {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeCollectionTitle(
            jvm.env(), nullptr, jvm.string(id));
    }

    jint contains(const std::string& album, const std::string& asset) {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeAlbumContainsAsset(
            jvm.env(), nullptr, jvm.string(album), jvm.string(asset));
    }
};

const std::string newRecord = R"({"id":"new","filename":"nü\"w.mov","isVideo":true,"width":1920,)"
                              R"("height":1080,"createdMs":100000,"isFavorite":true)";
const std::string oldRecord = R"({"id":"old","filename":"old.jpg","isVideo":false,"width":40,)"
                              R"("height":30,"createdMs":-1500,"isFavorite":false)";

} // namespace

TEST_F(Browsing, AsksForReadingAndWritingFromAnyThread) {
    const auto authorize = [&](long status, bool before) {
        script.authorization = status;
        script.answersBeforeReturning = before;
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeAuthorize(jvm.env(),
                                                                                  nullptr);
    };
    EXPECT_EQ(authorize(3, false), 1);
    EXPECT_EQ(authorize(4, false), 2);
    EXPECT_EQ(authorize(2, true), 0);
    EXPECT_THAT(calls(), testing::Each("request authorization for level 2"));
}

TEST_F(Browsing, ListsTheLibraryNewestFirst) {
    EXPECT_EQ(list(2, 0), "[" + newRecord + "}," + oldRecord + "}]");
    EXPECT_THAT(calls(), ElementsAre("fetch assets, options new, by creationDate ascending NO",
                                     "authorization status for level 2"));
    EXPECT_THAT(list(9, 2), HasSubstr(R"("filename":"undated-.jpg")"));
    EXPECT_THAT(list(9, 2), HasSubstr(R"("createdMs":0,)"));
    EXPECT_THAT(logLines()[0], "listAssets total=3 start=0 end=2 (auth=3)");
    calls();
    EXPECT_EQ(
        Java_com_morrowfen_lumatrice_service_PhotosService_nativeAssetCount(jvm.env(), nullptr), 3);
    EXPECT_THAT(calls(), ElementsAre("fetch assets, options new"));
}

TEST_F(Browsing, ListsALevelInTheLibrarysOrderWithNilOptions) {
    EXPECT_EQ(albums(""), R"([{"id":"folder","title":"Folder","kind":"folder","count":2},)"
                          R"({"id":"trip","title":"Trip","kind":"album","count":2},)"
                          R"({"id":"recents","title":"Recents","kind":"smart","count":1}])");
    EXPECT_THAT(calls(), ElementsAre("fetch top level, options nil",
                                     "fetch collections in folder, options nil",
                                     "fetch assets in trip, options nil",
                                     "fetch albums of type 2 subtype 9223372036854775807, "
                                     "options nil",
                                     "fetch assets in recents, options nil",
                                     "fetch assets in empty, options nil"));
    EXPECT_EQ(albums("folder"),
              R"([{"id":"inner","title":"Untitled","kind":"folder","count":0},)"
              R"({"id":"inside","title":"In\u0000side","kind":"album","count":0}])");
    EXPECT_EQ(albums("trip"), "[]");
}

TEST_F(Browsing, SortsTheAssetsOfAUsersAlbumOnly) {
    EXPECT_EQ(assetsOf("trip"),
              "[" + newRecord + R"(,"isHidden":false},)" + oldRecord + R"(,"isHidden":false}])");
    EXPECT_THAT(calls(), ElementsAre("fetch albums trip, options nil",
                                     "fetch assets in trip, options new, by creationDate "
                                     "ascending NO"));
    EXPECT_EQ(assetsOf("recents"), "[" + newRecord + R"(,"isHidden":false}])");
    EXPECT_THAT(calls(), ElementsAre("fetch albums recents, options nil",
                                     "fetch assets in recents, options new"));
    EXPECT_EQ(assetsOf("folder"), "[]");
}

TEST_F(Browsing, AnswersQuestionsAboutOneCollection) {
    EXPECT_EQ(parentOf("inside"), "folder");
    EXPECT_THAT(calls(), ElementsAre("fetch albums inside, options nil",
                                     "fetch folders with inside, options nil"));
    EXPECT_EQ(parentOf("inner"), "folder");
    EXPECT_EQ(parentOf("trip"), "");
    EXPECT_EQ(parentOf("unknown"), "");
    EXPECT_EQ(jvm.textOf(titleOf("folder")), "Folder");
    EXPECT_EQ(jvm.textOf(titleOf("inner")), "");
    EXPECT_EQ(titleOf("unknown"), nullptr);
}

TEST_F(Browsing, LooksForAnAssetInAnAlbumByAPredicate) {
    EXPECT_EQ(contains("trip", "new"), 1);
    EXPECT_THAT(calls(),
                ElementsAre("fetch albums trip, options nil",
                            "fetch assets in trip, options new, where localIdentifier = new"));
    EXPECT_EQ(contains("trip", "undated-asset"), 0);
    EXPECT_EQ(contains("trip", R"(x" OR "1" == "1)"), 0);
    EXPECT_EQ(contains("folder", "new"), -1);
    EXPECT_THAT(logLines(), IsEmpty());
}
