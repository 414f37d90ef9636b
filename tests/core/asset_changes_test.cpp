// Marks, deletion, membership in albums, and what one asset takes over from another.
#include "tests/core/support.h"

namespace {

struct AssetChanges : CoreTest {
    AssetChanges() {
        library.assets = {imageAsset("1"), imageAsset("2"), imageAsset("3")};
        library.albums["trip"] = albumTitled("trip", "Trip");
    }
};

struct AttributeCopy : CoreTest {
    AttributeCopy() {
        library.assets = {imageAsset("target"), imageAsset("source")};
        library.assets[1]->isFavorite = true;
        library.albumsHolding["source"] = {albumTitled("trip", "Trip"), albumTitled("best", "")};
    }
    std::string copy() { return CALL(CopyAssetAttributes, "source", "target"); }
};

} // namespace

TEST_F(AssetChanges, AreOneTransactionForAllThatIsFound) {
    EXPECT_EQ(CALL(SetFavorite, {nullptr, "3", "unknown", jni::unreadable, "1"}, JNI_TRUE), "2");
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("fetch assets 3,unknown,1", "begin changes", "asset at 0",
                            "asset 1: favourite true", "asset at 1", "asset 3: favourite true",
                            "changes done"));
    EXPECT_EQ(jvm.localRefsDeleted, 4);

    library.changesOnAnotherThread = true;
    library.assets[1]->isHidden = true; // is written again
    EXPECT_EQ(CALL(SetHidden, {"2"}, JNI_TRUE), "1");
    EXPECT_THAT(library.operations(), Contains("asset 2: hidden true"));
    EXPECT_FALSE(happened("asset 2: favourite"));
    EXPECT_EQ(CALL(AddAssetsToAlbum, "trip", {"3", "unknown", "1"}), "2");
    EXPECT_THAT(library.operations(), Contains("album trip: add assets 1,3"));
    EXPECT_EQ(CALL(RemoveAssetsFromAlbum, "trip", {"3", "1", "2"}), "3");
    EXPECT_THAT(library.operations(), Contains("album trip: remove assets 1,2,3"));
    EXPECT_THAT(home.logLines(), IsEmpty());
    EXPECT_EQ(CALL(DeleteAssets, {"3", nullptr, "unknown", "1"}), "2");
    EXPECT_THAT(library.operations(), Contains("delete assets 1,3"));
    EXPECT_THAT(library.operations(), Contains("begin changes").Times(5));
    EXPECT_THAT(home.logLines(), ElementsAre("deleted 2 asset(s)"));
}

TEST_F(AssetChanges, MarksAreSetByJniTrueAloneAndClearedByAnyOtherByte) {
    for (const int byte : {0, 2, 128, 255}) {
        Library fresh;
        fresh.assets = {imageAsset("1")};
        EXPECT_EQ(CALL(SetFavorite, {"1"}, static_cast<jboolean>(byte)), "1");
        EXPECT_EQ(CALL(SetHidden, {"1"}, static_cast<jboolean>(byte)), "1");
        EXPECT_THAT(fresh.operations(), Contains("asset 1: favourite false")) << byte;
        EXPECT_THAT(fresh.operations(), Contains("asset 1: hidden false")) << byte;
    }
}

TEST_F(AssetChanges, LogWhyTheyWereRefused) {
    library.changeAnswers.assign(4, {.done = false, .error = errorSaying("No room.")});
    library.changeAnswers[1].error = library.changeAnswers[2].error = std::nullopt;
    EXPECT_EQ(CALL(SetFavorite, {"1"}, JNI_TRUE), "-2");
    EXPECT_EQ(CALL(SetHidden, {"1"}, JNI_TRUE), "-2");
    EXPECT_EQ(CALL(AddAssetsToAlbum, "trip", {"1"}), "-2");
    EXPECT_EQ(CALL(RemoveAssetsFromAlbum, "trip", {"1"}), "-2");
    EXPECT_THAT(home.logLines(),
                ElementsAre("set asset flag failed: No room.", "set asset flag failed: unknown",
                            "album membership change failed: unknown",
                            "album membership change failed: No room."));
}

TEST_F(AssetChanges, DeletionTellsTheUsersRefusalByDomainAndCodeTogether) {
    const std::string photos(PHPhotosErrorDomain);
    const auto refusedWith = [&](const std::optional<NSError>& error) {
        library.changeAnswers = {{.done = false, .error = error}};
        return CALL(DeleteAssets, {"1", "2"});
    };
    EXPECT_EQ(refusedWith(NSError{photos, 3072, "The user said no."}), "-2");
    EXPECT_EQ(refusedWith(NSError{"NSCocoaErrorDomain", 3072, "Cancelled elsewhere."}), "-3");
    EXPECT_EQ(refusedWith(NSError{photos, 3071, "Almost."}), "-3");
    EXPECT_EQ(refusedWith(NSError{photos, 3072 + (1L << 32), std::nullopt}), "-3");
    EXPECT_EQ(refusedWith(std::nullopt), "-3");
    EXPECT_EQ(refusedWith(errorSaying(std::string(3000, 'x'))), "-3");
    EXPECT_THAT(home.logLines(),
                ElementsAre("delete cancelled at the system sheet",
                            "delete failed: Cancelled elsewhere.", "delete failed: Almost.",
                            "delete failed: unknown", "delete failed: unknown", SizeIs(2047)));
}

TEST_F(AssetChanges, MembershipWithoutARequestIsTheTransactionsToDecide) {
    library.albums["trip"]->assetCollectionType = 3; // neither of the types that there are now
    library.givesChangeRequests = false;
    EXPECT_EQ(CALL(AddAssetsToAlbum, "trip", {"1"}), "1");
    EXPECT_EQ(CALL(RemoveAssetsFromAlbum, "trip", {"1"}), "1");
    EXPECT_FALSE(happened("album trip:"));
}

TEST_F(AttributeCopy, MarksTheTargetAndThenAddsItToEachAlbumInATransactionOfItsOwn) {
    library.changesOnAnotherThread = true;
    library.assets[1]->isHidden = true; // is not copied
    EXPECT_EQ(copy(), "2");
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("fetch assets source", "asset at 0", "fetch assets target",
                            "asset at 0", "begin changes", "asset target: favourite true",
                            "changes done", "fetch albums of type 1 that hold source",
                            "begin changes", "request album trip", "album trip: add asset target",
                            "changes done", "begin changes", "request album best",
                            "album best: add asset target", "changes done"));
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(AttributeCopy, OfASourceWithoutMarkOrAlbumLeavesTheTargetsMark) {
    library.assets[1]->isFavorite = false;
    library.assets[0]->isFavorite = true;
    library.albumsHolding.clear();
    EXPECT_EQ(copy(), "0");
    EXPECT_FALSE(happened("begin changes"));
}

TEST_F(AttributeCopy, LogsTheMarksErrorIfThereIsOneAndGoesOn) {
    library.changeAnswers = {{.done = false, .error = errorSaying("No.")}};
    EXPECT_EQ(copy(), "2");
    library.changeAnswers = {{.done = false}};
    EXPECT_EQ(copy(), "2");
    library.changeAnswers = {{.done = true, .error = errorSaying("Done, and yet.")}};
    EXPECT_EQ(copy(), "2");
    EXPECT_THAT(home.logLines(),
                ElementsAre("favourite copy failed: No.", "favourite copy failed: Done, and yet."));
}

TEST_F(AttributeCopy, SkipsAlbumsThatRefuseAndNamesThem) {
    library.assets[1]->isFavorite = false;
    library.albumsHolding["source"] = {albumTitled("a", "Trip 100%s"), albumTitled("b", "B"),
                                       std::nullopt, albumTitled("c", std::nullopt),
                                       albumTitled("d", "")};
    library.changeAnswers = {{.done = false, .error = errorSaying("Full.")},
                             {.done = true},
                             {.done = false},
                             {.done = false, .error = errorSaying("Gone.")}};
    EXPECT_EQ(copy(), "1");
    EXPECT_THAT(home.logLines(), ElementsAre("album rejoin failed for Trip 100%s: Full.",
                                             "album rejoin failed for (untitled): unknown",
                                             "album rejoin failed for : Gone."));
    library.givesChangeRequests = false; // the transaction decides
    EXPECT_EQ(copy(), "4");
}
