#include "tests/core/support.h"

using scripted::albumTitled;
using scripted::errorSaying;
using scripted::imageAsset;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

struct AttributeCopy : CoreTest {
    AttributeCopy() {
        library.assets = {imageAsset("target"), imageAsset("source")};
        library.assets[1]->isFavorite = true;
        library.albumsHolding["source"] = {albumTitled("trip", "Trip"), albumTitled("best", "")};
    }

    jint copy(jstring source, jstring target) {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeCopyAssetAttributes(
            jvm.env(), nullptr, source, target);
    }

    jint copy() { return copy(jvm.string("source"), jvm.string("target")); }
};

} // namespace

TEST_F(AttributeCopy, MarksTheTargetAndThenAddsItToEachAlbumInATransactionOfItsOwn) {
    library.changesOnAnotherThread = true;
    library.assets[1]->isHidden = true; // is not copied
    EXPECT_EQ(copy(), 2);
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("fetch assets source", "asset at 0", "fetch assets target",
                            "asset at 0", "begin changes", "asset target: favourite true",
                            "changes done", "fetch albums of type 1 that hold source",
                            "begin changes", "request album trip", "album trip: add asset target",
                            "changes done", "begin changes", "request album best",
                            "album best: add asset target", "changes done"));
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(AttributeCopy, OfASourceWithoutTheMarkLeavesTheTargetsMark) {
    library.assets[1]->isFavorite = false;
    library.assets[0]->isFavorite = true;
    EXPECT_EQ(copy(), 2);
    EXPECT_THAT(library.operations(), Not(Contains(HasSubstr("favourite"))));
}

TEST_F(AttributeCopy, OfASourceInNoAlbumIsNone) {
    library.albumsHolding.clear();
    EXPECT_EQ(copy(), 0);
    EXPECT_THAT(library.operations(), Contains("asset target: favourite true"));
}

TEST_F(AttributeCopy, LogsTheMarksErrorIfThereIsOneAndGoesOn) {
    library.changeAnswers = {{.done = false, .error = errorSaying("No.")}};
    EXPECT_EQ(copy(), 2);
    EXPECT_THAT(home.logLines(), ElementsAre("favourite copy failed: No."));
    library.changeAnswers = {{.done = false}};
    EXPECT_EQ(copy(), 2);
    EXPECT_THAT(home.logLines(), testing::SizeIs(1));
    library.changeAnswers = {{.done = true, .error = errorSaying("Done, and yet.")}};
    EXPECT_EQ(copy(), 2);
    EXPECT_EQ(home.logLines().back(), "favourite copy failed: Done, and yet.");
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
    EXPECT_EQ(copy(), 1);
    EXPECT_THAT(home.logLines(), ElementsAre("album rejoin failed for Trip 100%s: Full.",
                                             "album rejoin failed for (untitled): unknown",
                                             "album rejoin failed for : Gone."));
}

TEST_F(AttributeCopy, CountsAnAlbumByItsTransactionThoughThereBeNoRequest) {
    library.givesChangeRequests = false;
    EXPECT_EQ(copy(), 2);
    EXPECT_THAT(library.operations(), Not(Contains(HasSubstr("add asset"))));
}

TEST_F(AttributeCopy, WithoutBothAssetsChangesNothing) {
    EXPECT_EQ(copy(nullptr, jvm.string("target")), -1);
    EXPECT_EQ(copy(jvm.string("source"), nullptr), -1);
    EXPECT_EQ(jvm.charactersTaken, 0);
    EXPECT_EQ(copy(jvm.string("\xED\xA0\x80"), jvm.string("target")), -1);
    EXPECT_EQ(copy(jvm.string("source"), jvm.stringWithoutCharacters()), -1);
    EXPECT_THAT(library.operations(), nothingInScopes());
    EXPECT_EQ(copy(jvm.string("source"), jvm.string("unknown")), -1);
    EXPECT_EQ(copy(jvm.string("unknown"), jvm.string("target")), -1);
    EXPECT_EQ(copy(jvm.string(""), jvm.string("target")), -1);
    library.firstFoundIsNil = true;
    EXPECT_EQ(copy(), -1);
    EXPECT_THAT(library.operations(), Not(Contains("begin changes")));
    EXPECT_EQ(jvm.charactersHeld, 0);
    EXPECT_THAT(home.logLines(), IsEmpty());
}
