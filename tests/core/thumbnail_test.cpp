#include "tests/core/support.h"

using scripted::imageAsset;
using scripted::ImageDelivery;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::string_literals;

namespace {

struct Thumbnail : CoreTest {
    Thumbnail() { library.assets = {imageAsset("one"), imageAsset("two")}; }

    std::string request(jstring identifier, jint width = 64, jint height = 48) {
        return jni::Environment::bytesOf(
            Java_com_morrowfen_lumatrice_service_PhotosService_nativeRequestThumbnail(
                jvm.env(), nullptr, identifier, width, height));
    }
};

} // namespace

TEST_F(Thumbnail, IsTheFastestCoverOfTheSizeAskedForAsJpeg) {
    library.imageDeliveries = {{.encoded = "\xFF\xD8 jpeg \0 bytes \xFF\xD9"s}};
    EXPECT_EQ(request(jvm.string("two"), 300, -1), "\xFF\xD8 jpeg \0 bytes \xFF\xD9"s);
    EXPECT_THAT(library.operations(),
                ElementsAre("open scope", "fetch assets two", "asset at 0",
                            "request image of two, 300 x -1, content mode 1",
                            "synchronous, delivery mode 2, resize mode 1, network, version 0",
                            "encode, type 3, factor 0.85", "close scope"));
    EXPECT_EQ(jvm.charactersHeld, 0);
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(Thumbnail, TakesTheDeliveryFromAnotherThread) {
    library.imagesFromAnotherThread = true;
    library.imageDeliveries = {{.encoded = "jpeg"}};
    EXPECT_EQ(request(jvm.string("one")), "jpeg");
    // The library may keep the handler for longer than the call, and use it.
    library.imageHandler(
        platform::NSImage{std::make_shared<ImageDelivery>(scripted::ImageDelivery{})});
}

TEST_F(Thumbnail, OfTheLastDeliveryThatHasABitmapWins) {
    library.imageDeliveries = {{.encoded = "first"}, {.encoded = "second"}};
    EXPECT_EQ(request(jvm.string("one")), "second");
    library.imageDeliveries = {{.encoded = "kept"}, {.hasImage = false}, {.hasBitmap = false}};
    EXPECT_EQ(request(jvm.string("one")), "kept");
    library.imageDeliveries = {{.encoded = "lost"}, {.encoded = std::nullopt}};
    EXPECT_EQ(request(jvm.string("one")), "(null)");
    library.imageDeliveries = {{.encoded = std::nullopt}, {.encoded = "found"}};
    EXPECT_EQ(request(jvm.string("one")), "found");
}

TEST_F(Thumbnail, IsNullWithoutAPicture) {
    EXPECT_EQ(request(jvm.string("one")), "(null)"); // the handler is never called
    library.imageDeliveries = {{.hasImage = false}};
    EXPECT_EQ(request(jvm.string("one")), "(null)");
    library.imageDeliveries = {{.hasBitmap = false}};
    EXPECT_EQ(request(jvm.string("one")), "(null)");
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(Thumbnail, OfNoBytesIsAnEmptyArray) {
    library.imageDeliveries = {{.encoded = ""}};
    EXPECT_EQ(request(jvm.string("one")), "");
}

TEST_F(Thumbnail, IsNullForAnIdentifierThatNamesNothing) {
    library.imageDeliveries = {{.encoded = "jpeg"}};
    EXPECT_EQ(request(jvm.string("three")), "(null)");
    EXPECT_EQ(request(jvm.string("")), "(null)");
    EXPECT_EQ(request(jvm.stringWithoutCharacters()), "(null)");
    EXPECT_EQ(request(jvm.string("\xED\xA0\xBD\xED\xB8\x80")), "(null)");
    library.firstFoundIsNil = true;
    EXPECT_EQ(request(jvm.string("one")), "(null)");
    EXPECT_THAT(library.operations(), testing::Not(testing::Contains(testing::HasSubstr("image"))));
    EXPECT_EQ(library.operations().back(), "close scope");
}

TEST_F(Thumbnail, IsNullWhenTheJvmHasNoRoomForIt) {
    library.imageDeliveries = {{.encoded = "jpeg"}};
    jvm.newByteArrayFails = true;
    EXPECT_EQ(request(jvm.string("one")), "(null)");
    EXPECT_EQ(library.operations().back(), "close scope");
}
