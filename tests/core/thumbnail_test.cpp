#include "tests/core/support.h"

using namespace std::string_literals;

namespace {

struct Thumbnail : CoreTest {
    Thumbnail() { library.assets = {imageAsset("one"), imageAsset("two")}; }

    std::string of(std::vector<ImageDelivery> deliveries) {
        library.imageDeliveries = std::move(deliveries);
        return CALL(RequestThumbnail, "one", 64, 48);
    }
};

} // namespace

TEST_F(Thumbnail, IsTheFastestCoverOfTheSizeAskedForAsJpeg) {
    library.imageDeliveries = {{.encoded = "\xFF\xD8 jpeg \0 bytes \xFF\xD9"s}};
    EXPECT_EQ(CALL(RequestThumbnail, "two", 300, -1), "\xFF\xD8 jpeg \0 bytes \xFF\xD9"s);
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
    EXPECT_EQ(of({{.encoded = "jpeg"}}), "jpeg");
    // The library may keep the handler for longer than the call, and use it.
    if (library.imageHandler)
        library.imageHandler(NSImage{std::make_shared<ImageDelivery>(ImageDelivery{})});
}

TEST_F(Thumbnail, IsTheLastDeliveryThatHasABitmap) {
    EXPECT_EQ(of({{.encoded = "first"}, {.encoded = "second"}}), "second");
    EXPECT_EQ(of({{.encoded = "kept"}, {.hasImage = false}, {.hasBitmap = false}}), "kept");
    EXPECT_EQ(of({{.encoded = "lost"}, {.encoded = std::nullopt}}), "(null)");
    EXPECT_EQ(of({{.encoded = std::nullopt}, {.encoded = "found"}}), "found");
    EXPECT_EQ(of({{.encoded = ""}}), "");
    EXPECT_EQ(of({}), "(null)"); // the handler is never called
    EXPECT_EQ(of({{.hasImage = false}}), "(null)");
    EXPECT_EQ(of({{.hasBitmap = false}}), "(null)");
    jvm.newByteArrayFails = true;
    EXPECT_EQ(of({{.encoded = "jpeg"}}), "(null)");
    EXPECT_EQ(library.operations().back(), "close scope");
    EXPECT_THAT(home.logLines(), IsEmpty());
}
