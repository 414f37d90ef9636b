// Access to the library, and the whole of it by pages.
#include "tests/core/support.h"

#include <limits>

namespace {

using Authorization = CoreTest;

struct AssetListing : CoreTest {
    AssetListing() {
        for (int i = 0; i < 12; ++i)
            library.assets.push_back(imageAsset(std::to_string(i)));
    }

    // The identifiers on a page.
    std::string page(jint count, jint offset) {
        std::string identifiers;
        const std::string json = CALL(ListAssets, count, offset);
        for (std::size_t at = 0; (at = json.find("\"id\":\"", at)) != std::string::npos; ++at)
            identifiers += json.substr(at + 6, json.find('"', at + 6) - at - 6) + " ";
        return identifiers;
    }
};

} // namespace

TEST_F(Authorization, MapsEveryStatusAndAlwaysAsksForReadingAndWriting) {
    const std::vector<std::pair<long, const char*>> expected = {
        {0, "0"}, {1, "0"}, {2, "0"}, {3, "1"}, {4, "2"}, {5, "0"}, {-1, "0"}, {4294967299, "0"}};
    for (const auto& [status, access] : expected) {
        Library fresh;
        fresh.authorizationAnswers = {status};
        EXPECT_EQ(CALL(Authorize), access) << "status " << status;
        EXPECT_THAT(fresh.operations(), ElementsAre("request authorization, level 2"));
    }
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(Authorization, WaitsForAHandlerOnAnotherThreadEvenIfItIsCalledTwice) {
    for (const auto calls :
         {HandlerCalls::onceFromAnotherThread, HandlerCalls::twiceFromAnotherThread}) {
        library.authorizationHandler = calls;
        library.authorizationAnswers = {PHAuthorizationStatusLimited};
        for (int round = 0; round < 200; ++round)
            ASSERT_EQ(CALL(Authorize), "2");
    }
    library.joinHandlers();
}

TEST_F(AssetListing, AsksOnceForTheNewestFirstAndTakesOnlyThePage) {
    EXPECT_EQ(page(2, 9), "9 10 ");
    EXPECT_THAT(library.operations(),
                ElementsAre("open scope", "fetch all assets, by creationDate descending",
                            "authorization status, level 2", "asset at 9", "asset at 10",
                            "close scope"));
    EXPECT_THAT(home.logLines(), ElementsAre("listAssets total=12 start=9 end=11 (auth=3)"));
}

TEST_F(AssetListing, ClampsThePageToTheLibrary) {
    constexpr jint most = std::numeric_limits<jint>::max();
    constexpr jint least = std::numeric_limits<jint>::min();
    library.authorizationStatus = PHAuthorizationStatusLimited; // logged as it is
    EXPECT_EQ(page(5, 10), "10 11 ");
    EXPECT_EQ(page(2, -3), "0 1 ");
    EXPECT_EQ(page(most, 10), "10 11 ");
    EXPECT_EQ(CALL(ListAssets, least, 4), "[]");
    EXPECT_EQ(CALL(ListAssets, 5, 12), "[]");
    EXPECT_EQ(CALL(ListAssets, most, most), "[]");
    EXPECT_EQ(CALL(ListAssets, -1, least), "[]");
    std::vector<std::string> lines;
    for (const char* const bounds :
         {"start=10 end=12", "start=0 end=2", "start=10 end=12", "start=4 end=4", "start=12 end=12",
          "start=12 end=12", "start=0 end=0"})
        lines.push_back("listAssets total=12 " + std::string(bounds) + " (auth=4)");
    EXPECT_EQ(home.logLines(), lines);
}

TEST_F(AssetListing, SeparatesRecordsAndLeavesOutWhatTheLibraryCannotGive) {
    library.assets = {std::nullopt, imageAsset("0"), imageAsset("1")};
    library.resources["0"] = {resourceNamed(PHAssetResourceTypePhoto, "😀\".jpg")};
    const std::string rest = R"(,"isVideo":false,"width":0,"height":0,"createdMs":0,)"
                             R"("isFavorite":false})";
    EXPECT_EQ(CALL(ListAssets, 10, 0), R"([{"id":"0","filename":"😀\".jpg")" + rest +
                                           R"(,{"id":"1","filename":"1.jpg")" + rest + "]");
    EXPECT_EQ(CALL(ListAssets, 1, 0), "[]");
}

TEST_F(AssetListing, CountsWithoutSortingOrLoggingAndKeepsTheLow32Bits) {
    EXPECT_EQ(CALL(AssetCount), "12");
    EXPECT_THAT(library.operations(), ElementsAre("open scope", "fetch all assets", "close scope"));
    library.countClaimed = 0x1'8000'0005;
    EXPECT_EQ(CALL(AssetCount), std::to_string(std::numeric_limits<jint>::min() + 5));
    EXPECT_THAT(home.logLines(), IsEmpty());
}
