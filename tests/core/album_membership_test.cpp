#include "tests/core/support.h"

using scripted::albumTitled;
using scripted::errorSaying;
using scripted::imageAsset;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

using Method = jint (*)(JNIEnv*, jobject, jstring, jobjectArray) noexcept;
constexpr Method addMethod =
    Java_com_morrowfen_lumatrice_service_PhotosService_nativeAddAssetsToAlbum;
constexpr Method removeMethod =
    Java_com_morrowfen_lumatrice_service_PhotosService_nativeRemoveAssetsFromAlbum;

struct AlbumMembership : CoreTest {
    AlbumMembership() {
        library.albums["trip"] = albumTitled("trip", "Trip");
        library.assets = {imageAsset("1"), imageAsset("2"), imageAsset("3")};
    }

    // Both methods answer this alike.
    void expectOfBoth(jint result, jstring album, jobjectArray assets) {
        EXPECT_EQ(addMethod(jvm.env(), nullptr, album, assets), result);
        EXPECT_EQ(removeMethod(jvm.env(), nullptr, album, assets), result);
    }

    jobjectArray assetsOneToThree() {
        return jvm.array({jvm.string("3"), jvm.string("1"), jvm.string("2")});
    }
};

} // namespace

TEST_F(AlbumMembership, AddsAllAssetsThatAreFoundInOneRequest) {
    const auto identifiers = jvm.array({nullptr, jvm.string("3"), jvm.string("unknown"),
                                        jvm.stringWithoutCharacters(), jvm.string("1")});
    EXPECT_EQ(addMethod(jvm.env(), nullptr, jvm.string("trip"), identifiers), 2);
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("fetch albums trip", "fetch assets 3,unknown,1", "begin changes",
                            "request album trip", "album trip: add assets 1,3", "changes done"));
    EXPECT_THAT(home.logLines(), IsEmpty());
    EXPECT_EQ(jvm.localRefsDeleted, 4);
}

TEST_F(AlbumMembership, RemovesWhereverTheLibraryRunsTheChanges) {
    library.changesOnAnotherThread = true;
    EXPECT_EQ(removeMethod(jvm.env(), nullptr, jvm.string("trip"), assetsOneToThree()), 3);
    EXPECT_THAT(operationsOfCall(), Contains("album trip: remove assets 1,2,3"));
}

TEST_F(AlbumMembership, RefusesSmartAlbumsWithoutAWordBeforeLookingForAssets) {
    library.albums["trip"]->assetCollectionType = platform::PHAssetCollectionTypeSmartAlbum;
    expectOfBoth(-2, jvm.string("trip"), assetsOneToThree());
    EXPECT_THAT(library.operations(), Not(Contains("fetch assets 3,1,2")));
    EXPECT_THAT(library.operations(), Not(Contains("begin changes")));
    EXPECT_THAT(home.logLines(), IsEmpty());
    library.albums["trip"]->assetCollectionType = 3; // neither of the types that there are now
    expectOfBoth(3, jvm.string("trip"), assetsOneToThree());
}

TEST_F(AlbumMembership, LogsWhyTheChangeFailed) {
    library.changeAnswers = {{.done = false, .error = errorSaying("No room.")}, {.done = false}};
    expectOfBoth(-2, jvm.string("trip"), assetsOneToThree());
    EXPECT_THAT(home.logLines(), ElementsAre("album membership change failed: No room.",
                                             "album membership change failed: unknown"));
}

TEST_F(AlbumMembership, WithoutAChangeRequestTheTransactionDecides) {
    library.givesChangeRequests = false;
    expectOfBoth(3, jvm.string("trip"), assetsOneToThree());
    EXPECT_THAT(library.operations(), Not(Contains(testing::HasSubstr("album trip:"))));
}

TEST_F(AlbumMembership, WithoutUsableArgumentsTouchesNothing) {
    const jstring trip = jvm.string("trip");
    expectOfBoth(-1, nullptr, assetsOneToThree());
    expectOfBoth(-1, trip, nullptr);
    EXPECT_EQ(jvm.charactersTaken, 0);
    expectOfBoth(-1, jvm.stringWithoutCharacters(), assetsOneToThree());
    EXPECT_EQ(jvm.elementsTaken, 0);
    expectOfBoth(-1, trip, jvm.array({}));
    expectOfBoth(-1, trip, jvm.array({nullptr, jvm.string("\xED\xA0\x80")}));
    EXPECT_THAT(library.operations(), nothingInScopes());
}

TEST_F(AlbumMembership, OfUnknownAlbumsOrOnlyUnknownAssetsIsNotStarted) {
    library.folders["f"] = scripted::folderTitled("f", "Years");
    library.albums["nil"] = std::nullopt;
    expectOfBoth(-1, jvm.string("f"), assetsOneToThree());
    expectOfBoth(-1, jvm.string("nil"), assetsOneToThree());
    expectOfBoth(-1, jvm.string("trip"), jvm.array({jvm.string("unknown"), jvm.string("")}));
    EXPECT_THAT(library.operations(), Not(Contains("begin changes")));
    EXPECT_THAT(home.logLines(), IsEmpty());
}
