// The record that describes one asset.
#include "browse/asset_record.h"
#include "tests/core/support.h"

#include <cmath>

namespace {

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
