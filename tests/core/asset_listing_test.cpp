// The whole library by pages, and the record that describes one asset.
#include "browse/asset_record.h"
#include "tests/core/support.h"

#include <cmath>
#include <limits>

using scripted::imageAsset;
using scripted::resourceNamed;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace platform;

namespace {

struct AssetListing : CoreTest {
    std::string list(jint count, jint offset) {
        return jni::Environment::textOf(
            Java_com_morrowfen_lumatrice_service_PhotosService_nativeListAssets(jvm.env(), nullptr,
                                                                                count, offset));
    }

    jint count() {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeAssetCount(jvm.env(),
                                                                                   nullptr);
    }

    // Assets "0", "1", "2" ... in the order of the fetch.
    void fill(int number) {
        for (int i = 0; i < number; ++i)
            library.assets.push_back(imageAsset(std::to_string(i)));
    }

    // The identifiers on a page.
    std::string page(jint count, jint offset) {
        std::string identifiers;
        const std::string json = list(count, offset);
        for (std::size_t at = 0; (at = json.find("\"id\":\"", at)) != std::string::npos; ++at)
            identifiers += json.substr(at + 6, json.find('"', at + 6) - at - 6) + " ";
        return identifiers;
    }
};

struct AssetRecord : CoreTest {
    std::string record(const PHAsset& asset,
                       AssetRecordVariant variant = AssetRecordVariant::withoutHidden) {
        std::string json;
        appendAssetRecord(json, asset, variant);
        return json;
    }

    std::string createdOf(std::optional<double> seconds) {
        PHAsset asset = imageAsset("a");
        asset.creationDate = seconds;
        const std::string json = record(asset);
        const auto start = json.find("\"createdMs\":") + sizeof "\"createdMs\":" - 1;
        return json.substr(start, json.find(',', start) - start);
    }

    std::string filenameOf(const PHAsset& asset) {
        const std::string json = record(asset);
        const auto start = json.find("\"filename\":\"") + sizeof "\"filename\":\"" - 1;
        return json.substr(start, json.find('"', start) - start);
    }
};

} // namespace

TEST_F(AssetListing, AsksOnceForTheNewestFirstAndTakesOnlyThePage) {
    fill(12);
    list(2, 9);
    EXPECT_THAT(library.operations(),
                ElementsAre("open scope", "fetch all assets, by creationDate descending",
                            "authorization status, level 2", "asset at 9", "asset at 10",
                            "close scope"));
    EXPECT_THAT(home.logLines(), ElementsAre("listAssets total=12 start=9 end=11 (auth=3)"));
}

TEST_F(AssetListing, ClampsThePageToTheLibrary) {
    constexpr jint most = std::numeric_limits<jint>::max();
    constexpr jint least = std::numeric_limits<jint>::min();
    fill(12);
    EXPECT_EQ(page(5, 10), "10 11 ");
    EXPECT_EQ(page(2, -3), "0 1 ");
    EXPECT_EQ(page(most, 10), "10 11 ");
    EXPECT_EQ(list(0, 4), "[]");
    EXPECT_EQ(list(least, 4), "[]");
    EXPECT_EQ(list(5, 12), "[]");
    EXPECT_EQ(list(most, most), "[]");
    EXPECT_EQ(list(-1, least), "[]");
    EXPECT_THAT(home.logLines(), ElementsAre("listAssets total=12 start=10 end=12 (auth=3)",
                                             "listAssets total=12 start=0 end=2 (auth=3)",
                                             "listAssets total=12 start=10 end=12 (auth=3)",
                                             "listAssets total=12 start=4 end=4 (auth=3)",
                                             "listAssets total=12 start=4 end=4 (auth=3)",
                                             "listAssets total=12 start=12 end=12 (auth=3)",
                                             "listAssets total=12 start=12 end=12 (auth=3)",
                                             "listAssets total=12 start=0 end=0 (auth=3)"));
}

TEST_F(AssetListing, LogsTheStatusUnmapped) {
    library.authorizationStatus = PHAuthorizationStatusLimited;
    EXPECT_EQ(list(10, 0), "[]");
    EXPECT_THAT(home.logLines(), ElementsAre("listAssets total=0 start=0 end=0 (auth=4)"));
}

TEST_F(AssetListing, SeparatesRecordsAndHasNoWhitespace) {
    fill(2);
    EXPECT_EQ(list(10, 0), R"([{"id":"0","filename":"0.jpg","isVideo":false,"width":0,"height":0,)"
                           R"("createdMs":0,"isFavorite":false},)"
                           R"({"id":"1","filename":"1.jpg","isVideo":false,"width":0,"height":0,)"
                           R"("createdMs":0,"isFavorite":false}])");
}

TEST_F(AssetListing, LeavesOutAnAssetThatTheLibraryCannotGive) {
    fill(3);
    library.assets[0] = std::nullopt;
    EXPECT_EQ(page(10, 0), "1 2 ");
    EXPECT_EQ(list(1, 0), "[]");
    EXPECT_THAT(list(2, 0), testing::StartsWith("[{"));
}

TEST_F(AssetListing, HandsEmojiOverAsFourByteUtf8) {
    library.assets.push_back(imageAsset("a"));
    library.resources["a"] = {resourceNamed(PHAssetResourceTypePhoto, "😀\".jpg")};
    list(1, 0);
    ASSERT_EQ(jvm.newStrings.size(), 1u);
    EXPECT_THAT(jvm.newStrings[0], testing::HasSubstr("\"\xF0\x9F\x98\x80\\\".jpg\""));
}

TEST_F(AssetListing, CountsWithoutSortingOrLogging) {
    fill(3);
    EXPECT_EQ(count(), 3);
    EXPECT_THAT(library.operations(), ElementsAre("open scope", "fetch all assets", "close scope"));
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(AssetListing, CountKeepsItsLow32Bits) {
    library.countClaimed = 0x1'8000'0005;
    EXPECT_EQ(count(), std::numeric_limits<jint>::min() + 5);
}

TEST_F(AssetRecord, HasTheFieldsOfItsVariantInOrder) {
    PHAsset asset = imageAsset("B84E8479-475C/L0/001");
    asset.mediaType = PHAssetMediaTypeVideo;
    asset.pixelWidth = 4032;
    asset.pixelHeight = 18446744073709551615ul;
    asset.creationDate = 1700000000.25;
    asset.isFavorite = true;
    asset.isHidden = true;
    library.resources[asset.localIdentifier] = {resourceNamed(PHAssetResourceTypeVideo, "a.mp4")};
    const std::string fields =
        R"({"id":"B84E8479-475C/L0/001","filename":"a.mp4","isVideo":true,"width":4032,)"
        R"("height":18446744073709551615,"createdMs":1700000000250,"isFavorite":true)";
    EXPECT_EQ(record(asset), fields + "}");
    EXPECT_EQ(record(asset, AssetRecordVariant::withHidden), fields + R"(,"isHidden":true})");
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
    EXPECT_EQ(filenameOf(asset), "ABCDEFGH.jpg");
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
