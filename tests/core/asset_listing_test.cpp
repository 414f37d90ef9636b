// Access to the library, the whole of it by pages, and the record that describes one asset.
#include "browse/asset_record.h"
#include "tests/core/support.h"

#include <cmath>
#include <limits>

using scripted::HandlerCalls;
using scripted::imageAsset;
using scripted::resourceNamed;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace platform;

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

struct AssetRecord : CoreTest {
    static std::string record(const PHAsset& asset) {
        std::string json;
        appendAssetRecord(json, asset, AssetRecordVariant::withoutHidden);
        return json;
    }
    // What stands between the words and the next of `end`.
    static std::string field(const PHAsset& asset, const std::string& words, char end) {
        const std::string json = record(asset);
        const auto start = json.find(words) + words.size();
        return json.substr(start, json.find(end, start) - start);
    }
    static std::string createdOf(std::optional<double> seconds) {
        PHAsset asset = imageAsset("a");
        asset.creationDate = seconds;
        return field(asset, "\"createdMs\":", ',');
    }
    static std::string filenameOf(const PHAsset& asset) {
        return field(asset, "\"filename\":\"", '"');
    }
};

} // namespace

TEST_F(Authorization, MapsEveryStatusAndAlwaysAsksForReadingAndWriting) {
    const std::vector<std::pair<long, const char*>> expected = {
        {0, "0"}, {1, "0"}, {2, "0"}, {3, "1"}, {4, "2"}, {5, "0"}, {-1, "0"}, {4294967299, "0"}};
    for (const auto& [status, access] : expected) {
        scripted::InstalledLibrary fresh;
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

TEST_F(AssetRecord, HasTheFieldsOfItsVariantInOrder) {
    PHAsset asset = imageAsset("B84E8479-475C/L0/001");
    asset.mediaType = PHAssetMediaTypeVideo;
    asset.pixelWidth = 4032;
    asset.pixelHeight = 18446744073709551615ul;
    asset.creationDate = 1700000000.25;
    asset.isFavorite = asset.isHidden = true;
    library.resources[asset.localIdentifier] = {resourceNamed(PHAssetResourceTypeVideo, "a.mp4")};
    std::string fields =
        R"({"id":"B84E8479-475C/L0/001","filename":"a.mp4","isVideo":true,"width":4032,)"
        R"("height":18446744073709551615,"createdMs":1700000000250,"isFavorite":true)";
    EXPECT_EQ(record(asset), fields + "}");
    std::string json = "[";
    appendAssetRecord(json, asset, AssetRecordVariant::withHidden);
    EXPECT_EQ(json, "[" + fields + R"(,"isHidden":true})");
}

TEST_F(AssetRecord, DatesAreMillisecondsTruncatedTowardZero) {
    EXPECT_EQ(createdOf(std::nullopt), "0");
    EXPECT_EQ(createdOf(0.0019999), "1");
    EXPECT_EQ(createdOf(-0.0019999), "-1");
    EXPECT_EQ(createdOf(-86400.5), "-86400500");
    EXPECT_EQ(createdOf(1e300), "9223372036854775807");
    EXPECT_EQ(createdOf(-1e300), "-9223372036854775808");
    EXPECT_EQ(createdOf(std::nan("")), "0");
}

TEST_F(AssetRecord, WithoutANameIsNamedByTheStartOfItsIdentifier) {
    PHAsset asset = imageAsset("ABCDEFGHIJ/L0/001");
    asset.mediaType = PHAssetMediaTypeAudio;
    EXPECT_EQ(filenameOf(asset), "ABCDEFGH.jpg");
    asset.mediaType = PHAssetMediaTypeVideo;
    library.resources[asset.localIdentifier] = {resourceNamed(PHAssetResourceTypeVideo, "")};
    EXPECT_EQ(filenameOf(asset), "ABCDEFGH.mov");
    EXPECT_EQ(filenameOf(imageAsset("abc")), "abc.jpg");
    EXPECT_EQ(filenameOf(imageAsset("äöüäöüäöü")), "äöüäöüäö.jpg");
    EXPECT_EQ(filenameOf(imageAsset("1234567😀")), "1234567.jpg");
    EXPECT_EQ(filenameOf(imageAsset("123456😀7")), "123456😀.jpg");
}

TEST_F(AssetRecord, TakesTheNameOfTheFirstPhotoOrVideoByPosition) {
    const PHAsset asset = imageAsset("a");
    auto& resources = library.resources["a"];
    EXPECT_EQ(primaryFilenameForAsset(asset), "");
    resources = {resourceNamed(PHAssetResourceTypeAudio, "audio"),
                 resourceNamed(PHAssetResourceTypeAlternatePhoto, "alternate"),
                 resourceNamed(PHAssetResourceTypeAdjustmentData, "adjustment"),
                 resourceNamed(9, "paired video")};
    EXPECT_EQ(primaryFilenameForAsset(asset), "");
    for (const long type : {PHAssetResourceTypePhoto, PHAssetResourceTypeVideo,
                            PHAssetResourceTypeFullSizePhoto, PHAssetResourceTypeFullSizeVideo}) {
        resources[3] = resourceNamed(type, "this");
        EXPECT_EQ(primaryFilenameForAsset(asset), "this") << type;
    }
    resources = {resourceNamed(PHAssetResourceTypeFullSizePhoto, "full"),
                 resourceNamed(PHAssetResourceTypePhoto, "photo")};
    EXPECT_EQ(primaryFilenameForAsset(asset), "full");
    // The first one decides even without a name of its own.
    resources[0].originalFilename = std::nullopt;
    EXPECT_EQ(primaryFilenameForAsset(asset), "");
}
