// Changes to assets, through the entry points.
#include "tests/photokit/support.h"

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

struct Changes : PhotoKitTest {
    Changes() {
        script.assets = {{.id = "a", .favorite = true}, {.id = "b"}};
        script.collections = {{.id = "trip", .title = "Trip", .assets = {"a"}},
                              {.id = "untitled", .assets = {"a"}},
                              {.id = "recents", .type = 2, .assets = {"a"}}};
    }

    jobjectArray array(const std::vector<std::string>& texts) {
        std::vector<jstring> strings;
        for (const std::string& text : texts)
            strings.push_back(jvm.string(text));
        return jvm.array(strings);
    }

    std::vector<std::optional<std::string>> import(const std::vector<std::string>& paths) {
        return jvm.textsOf(Java_com_morrowfen_lumatrice_service_PhotosService_nativeImportAssets(
            jvm.env(), nullptr, array(paths)));
    }

    jint setFavorite(jboolean value) {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeSetFavorite(
            jvm.env(), nullptr, array({"a", "b", "unknown"}), value);
    }

    jint setHidden(jboolean value) {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeSetHidden(
            jvm.env(), nullptr, array({"b"}), value);
    }

    jint deleteAssets() {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeDeleteAssets(
            jvm.env(), nullptr, array({"a", "unknown", "b"}));
    }

    jint addToTrip() {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeAddAssetsToAlbum(
            jvm.env(), nullptr, jvm.string("trip"), array({"b"}));
    }

    jint removeFromTrip() {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeRemoveAssetsFromAlbum(
            jvm.env(), nullptr, jvm.string("trip"), array({"a"}));
    }

    jint copyAttributes() {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeCopyAssetAttributes(
            jvm.env(), nullptr, jvm.string("a"), jvm.string("b"));
    }

    void refuse(const std::optional<standin::Failure>& failure) {
        script.changes.push_back({.done = false, .failure = failure});
    }
};

} // namespace

TEST_F(Changes, ImportsMoviesAsVideosAndEverythingElseAsPhotos) {
    const std::string photo = write("photo.jpg", "p");
    const std::string movie = write("movie.MOV", "m");
    const std::string plain = write("plain", "?");
    const auto ids = import({photo, movie, plain, home / "missing.jpg"});
    ASSERT_EQ(ids.size(), 4u);
    const auto lineOfType = [](const std::string& type, const std::string& path) {
        return "add resource of type " + type + " from " + path;
    };
    EXPECT_THAT(calls(), ElementsAre("does jpg conform to public.movie", "begin changes",
                                     "create asset", "creation: move file NO",
                                     "creation: name photo.jpg", lineOfType("1", photo),
                                     "changes done", "fetch assets " + *ids[0] + ", options nil",
                                     "does mov conform to public.movie", "begin changes",
                                     "create asset", "creation: move file NO",
                                     "creation: name movie.MOV", lineOfType("2", movie),
                                     "changes done", "fetch assets " + *ids[1] + ", options nil",
                                     "begin changes", "create asset", "creation: move file NO",
                                     "creation: name plain", lineOfType("1", plain), "changes done",
                                     "fetch assets " + *ids[2] + ", options nil"));
    EXPECT_EQ(ids[3], std::nullopt);
    EXPECT_THAT(logLines(),
                ElementsAre("imported photo.jpg as " + *ids[0] +
                                ": resource type=1 originalFilename='photo.jpg' uti=",
                            HasSubstr("resource type=2 originalFilename='movie.MOV'"),
                            HasSubstr("resource type=1 originalFilename='plain'"),
                            "import skipped (unreadable): " + (home / "missing.jpg").string()));
}

TEST_F(Changes, ImportsFailEachWithItsLine) {
    const std::string path = write("one.jpg", "p");
    refuse(standin::Failure{.code = 3302, .sentence = "damaged"});
    refuse({});
    script.changes.push_back({.makesPlaceholders = false});
    EXPECT_THAT(import({path, path, path}), Each(std::optional<std::string>()));
    EXPECT_THAT(logLines(), ElementsAre("import failed for one.jpg: damaged",
                                        "import failed for one.jpg: unknown",
                                        "import failed for one.jpg: unknown"));
}

TEST_F(Changes, SetEachMarkAloneToTheWantedValue) {
    EXPECT_EQ(setFavorite(JNI_FALSE), 2);
    EXPECT_THAT(calls(), ElementsAre("fetch assets a,b,unknown, options nil", "begin changes",
                                     "change asset a", "set favorite NO", "change asset b",
                                     "set favorite NO", "changes done"));
    EXPECT_EQ(setHidden(JNI_TRUE), 1);
    EXPECT_THAT(calls(), ElementsAre("fetch assets b, options nil", "begin changes",
                                     "change asset b", "set hidden YES", "changes done"));
    EXPECT_EQ(setFavorite(JNI_TRUE), 2);
    EXPECT_EQ(setHidden(JNI_FALSE), 1);
    EXPECT_TRUE(script.asset("b").favorite);
    EXPECT_FALSE(script.asset("b").hidden);
    refuse({});
    EXPECT_EQ(setHidden(JNI_TRUE), -2);
    EXPECT_THAT(logLines(), ElementsAre("set asset flag failed: unknown"));
}

TEST_F(Changes, DeletesWhatWasFoundInOneRequest) {
    EXPECT_EQ(deleteAssets(), 2);
    EXPECT_THAT(calls(), ElementsAre("fetch assets a,unknown,b, options nil", "begin changes",
                                     "delete assets a,b", "changes done"));
    EXPECT_EQ(deleteAssets(), -1);
    EXPECT_THAT(script.assets, IsEmpty());
    EXPECT_THAT(logLines(), ElementsAre("deleted 2 asset(s)"));
}

TEST_F(Changes, TellsARefusedDeletionByDomainAndCode) {
    refuse(standin::Failure{.code = 3072, .sentence = "no"});
    EXPECT_EQ(deleteAssets(), -2);
    refuse(standin::Failure{.domain = "other", .code = 3072, .sentence = "elsewhere"});
    EXPECT_EQ(deleteAssets(), -3);
    refuse(standin::Failure{.code = 3071});
    EXPECT_EQ(deleteAssets(), -3);
    refuse({});
    EXPECT_EQ(deleteAssets(), -3);
    EXPECT_THAT(logLines(),
                ElementsAre("delete cancelled at the system sheet", "delete failed: elsewhere",
                            HasSubstr("delete failed: "), "delete failed: unknown"));
    EXPECT_EQ(script.assets.size(), 2u);
}

TEST_F(Changes, MovesAssetsIntoAndOutOfAnAlbum) {
    EXPECT_EQ(addToTrip(), 1);
    EXPECT_THAT(calls(),
                ElementsAre("fetch albums trip, options nil", "fetch assets b, options nil",
                            "begin changes", "change album trip", "add assets b", "changes done"));
    EXPECT_EQ(removeFromTrip(), 1);
    EXPECT_THAT(calls(), testing::Contains("remove assets a"));
    EXPECT_THAT(script.collection("trip")->assets, ElementsAre("b"));
    // A collection that gives no request is passed over without a failure.
    script.changes = {{.makesRequests = false}, {.done = false}};
    EXPECT_EQ(addToTrip(), 1);
    EXPECT_THAT(calls(), Not(testing::Contains("add assets b")));
    EXPECT_EQ(addToTrip(), -2);
    EXPECT_THAT(logLines(), ElementsAre("album membership change failed: unknown"));
    EXPECT_EQ(Java_com_morrowfen_lumatrice_service_PhotosService_nativeAddAssetsToAlbum(
                  jvm.env(), nullptr, jvm.string("recents"), array({"b"})),
              -2);
}

TEST_F(Changes, CopiesTheMarkAndTheAlbumsOfAnAsset) {
    EXPECT_EQ(copyAttributes(), 2);
    EXPECT_THAT(calls(),
                ElementsAre("fetch assets a, options nil", "fetch assets b, options nil",
                            "begin changes", "change asset b", "set favorite YES", "changes done",
                            "fetch albums of type 1 with a, options nil", "begin changes",
                            "change album trip", "add assets b", "changes done", "begin changes",
                            "change album untitled", "add assets b", "changes done"));
    refuse(standin::Failure{.sentence = "no mark"});
    refuse(standin::Failure{.sentence = "no album"});
    refuse({});
    EXPECT_EQ(copyAttributes(), 0);
    EXPECT_THAT(logLines(), ElementsAre("favourite copy failed: no mark",
                                        "album rejoin failed for Trip: no album",
                                        "album rejoin failed for (untitled): unknown"));
    // An error counts whatever the answer was.
    script.changes = {{.failure = standin::Failure{.sentence = "done, but"}}};
    copyAttributes();
    EXPECT_THAT(logLines(), testing::Contains("favourite copy failed: done, but"));
}
