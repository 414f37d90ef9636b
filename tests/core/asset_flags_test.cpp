#include "tests/core/support.h"

using scripted::errorSaying;
using scripted::imageAsset;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

using FlagMethod = jint (*)(JNIEnv*, jobject, jobjectArray, jboolean) noexcept;
constexpr FlagMethod setFavorite =
    Java_com_morrowfen_lumatrice_service_PhotosService_nativeSetFavorite;
constexpr FlagMethod setHidden = Java_com_morrowfen_lumatrice_service_PhotosService_nativeSetHidden;

struct AssetFlags : CoreTest {
    AssetFlags() { library.assets = {imageAsset("1"), imageAsset("2"), imageAsset("3")}; }

    void expectOfBoth(jint result, jobjectArray assets) {
        EXPECT_EQ(setFavorite(jvm.env(), nullptr, assets, JNI_TRUE), result);
        EXPECT_EQ(setHidden(jvm.env(), nullptr, assets, JNI_TRUE), result);
    }

    jobjectArray assetsThreeAndOne() { return jvm.array({jvm.string("3"), jvm.string("1")}); }
};

} // namespace

TEST_F(AssetFlags, WritesOneMarkOfAllAssetsThatAreFoundInOneTransaction) {
    const auto identifiers = jvm.array({nullptr, jvm.string("3"), jvm.string("unknown"),
                                        jvm.stringWithoutCharacters(), jvm.string("1")});
    EXPECT_EQ(setFavorite(jvm.env(), nullptr, identifiers, JNI_TRUE), 2);
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("fetch assets 3,unknown,1", "begin changes", "asset at 0",
                            "asset 1: favourite true", "asset at 1", "asset 3: favourite true",
                            "changes done"));
    EXPECT_THAT(home.logLines(), IsEmpty());
    EXPECT_EQ(jvm.localRefsDeleted, 4);
}

TEST_F(AssetFlags, LeavesTheOtherMarkAloneWhereverTheLibraryRunsTheChanges) {
    library.changesOnAnotherThread = true;
    EXPECT_EQ(setHidden(jvm.env(), nullptr, jvm.array({jvm.string("2")}), JNI_TRUE), 1);
    EXPECT_THAT(operationsOfCall(), ElementsAre("fetch assets 2", "begin changes", "asset at 0",
                                                "asset 2: hidden true", "changes done"));
}

TEST_F(AssetFlags, AreWrittenWhateverTheAssetHas) {
    library.assets[0]->isFavorite = library.assets[0]->isHidden = true;
    expectOfBoth(1, jvm.array({jvm.string("1")}));
    EXPECT_THAT(library.operations(), Contains("asset 1: favourite true"));
    EXPECT_THAT(library.operations(), Contains("asset 1: hidden true"));
}

TEST_F(AssetFlags, AreSetByJniTrueAloneAndClearedByAnyOtherByte) {
    for (const int byte : {0, 2, 128, 255}) {
        scripted::InstalledLibrary fresh;
        fresh.assets = {imageAsset("1")};
        const auto wanted = static_cast<jboolean>(byte);
        const auto one = jvm.array({jvm.string("1")});
        EXPECT_EQ(setFavorite(jvm.env(), nullptr, one, wanted), 1);
        EXPECT_EQ(setHidden(jvm.env(), nullptr, one, wanted), 1);
        EXPECT_THAT(fresh.operations(), Contains("asset 1: favourite false")) << byte;
        EXPECT_THAT(fresh.operations(), Contains("asset 1: hidden false")) << byte;
    }
}

TEST_F(AssetFlags, LogWhyTheChangeFailed) {
    library.changeAnswers = {{.done = false, .error = errorSaying("No room.")}, {.done = false}};
    expectOfBoth(-2, assetsThreeAndOne());
    EXPECT_THAT(home.logLines(),
                ElementsAre("set asset flag failed: No room.", "set asset flag failed: unknown"));
}

TEST_F(AssetFlags, CountWhatTheFetchClaimsThoughAnObjectBeNil) {
    library.firstFoundIsNil = true;
    expectOfBoth(1, assetsThreeAndOne());
}

TEST_F(AssetFlags, WithoutAnAssetToWriteStartNothing) {
    expectOfBoth(-1, nullptr);
    expectOfBoth(-1, jvm.array({}));
    expectOfBoth(-1, jvm.array({nullptr, nullptr, jvm.string("\xED\xA0\x80")}));
    EXPECT_THAT(library.operations(), nothingInScopes());
    expectOfBoth(-1, jvm.array({jvm.string("unknown"), jvm.string("")}));
    EXPECT_THAT(library.operations(), Not(Contains("begin changes")));
    EXPECT_THAT(home.logLines(), IsEmpty());
}
