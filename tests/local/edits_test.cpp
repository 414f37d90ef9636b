// Transfers of an asset's files, edits, and taking edits back.
#include "tests/local/support.h"

#include "platform/asset_resource_manager.h"
#include "platform/content_editing.h"
#include "platform/local/change/edits.h"
#include "platform/local/change/revert.h"

#include <future>

using namespace platform;

namespace {

struct Received {
    std::string bytes;
    std::optional<NSError> error;
};

Received transfer(const PHAssetResource& resource) {
    Received received;
    std::promise<void> over;
    requestDataForAssetResource(
        resource, {.networkAccessAllowed = true},
        [&](std::span<const std::uint8_t> chunk) {
            received.bytes.append(chunk.begin(), chunk.end());
        },
        [&](const std::optional<NSError>& error) {
            received.error = error;
            over.set_value();
        });
    over.get_future().wait();
    return received;
}

std::vector<long> typesOf(const PHAsset& asset) {
    std::vector<long> types;
    for (const auto& resource : assetResourcesForAsset(asset))
        types.push_back(resource.type);
    return types;
}

PHAssetResource resourceOf(const std::string& identifier, long type) {
    for (const auto& resource : assetResourcesForAsset(*assetWith(identifier))) {
        if (resource.type == type)
            return resource;
    }
    return {};
}

std::optional<PHContentEditingInput> inputOf(const PHAsset& asset, bool canHandle = true) {
    std::optional<PHContentEditingInput> got;
    PHContentEditingInputRequestOptions options;
    options.networkAccessAllowed = true;
    options.canHandleAdjustmentData = [=](const PHAdjustmentData&) { return canHandle; };
    requestContentEditingInputWithOptions(asset, options, [&](const auto& input) { got = input; });
    return got;
}

// As an editor does it: the input, the rendered file, the commit.
std::optional<NSError> edit(const std::string& identifier, const NSData& rendered) {
    const auto asset = assetWith(identifier);
    const auto input = asset ? inputOf(*asset) : std::nullopt;
    if (!input)
        return NSError{"no input", 0, std::nullopt};
    auto output = initWithContentEditingInput(*input);
    std::optional<NSError> error;
    if (!writeToURL(rendered, output.renderedContentURL, NSDataWritingAtomic, error))
        return error;
    output.adjustmentData = initWithFormatIdentifier("editor", "1", dataOf("how"));
    const bool done = performChangesAndWait(
        [&] { setContentEditingOutput(changeRequestForAsset(*asset), output); }, error);
    return done ? std::nullopt : error;
}

NSData picture(const ScratchHome& home, int width, int height, int seed) {
    return dataOf(readBytes(writePicture(home.file("rendered.jpg"), width, height, seed)));
}

std::string pixelSizeOf(const std::string& identifier) {
    const auto asset = assetWith(identifier);
    return std::to_string(asset->pixelWidth) + "x" + std::to_string(asset->pixelHeight);
}

} // namespace

TEST(Transfers, HandOverTheBytesThatWereImported) {
    const ScratchHome home;
    const auto source = writePicture(home.file("a.jpg"), 3000, 2000);
    const auto identifier = *importFile(source).identifier;
    const Received received = transfer(resourceOf(identifier, PHAssetResourceTypePhoto));
    EXPECT_FALSE(received.error);
    EXPECT_EQ(received.bytes, readBytes(source));
}

TEST(Transfers, NeverPassDamageOffAsSuccess) {
    const ScratchHome home;
    const auto source = writePicture(home.file("a.jpg"), 1500, 1000);
    const auto identifier = *importFile(source).identifier;
    const auto resource = resourceOf(identifier, PHAssetResourceTypePhoto);
    const fs::path original = originalOf(home, identifier);
    const std::string bytes = readBytes(source);
    const auto sentence = [&] {
        const auto error = transfer(resource).error;
        return error ? error->localizedDescription.value_or("no sentence") : "success";
    };
    std::string changed = bytes;
    changed[bytes.size() / 2] = static_cast<char>(changed[bytes.size() / 2] ^ 1);
    writeText(original, changed);
    EXPECT_THAT(sentence(), HasSubstr("damaged"));
    EXPECT_FALSE(inputOf(*assetWith(identifier)));
    writeText(original, bytes.substr(0, bytes.size() - 1));
    EXPECT_THAT(sentence(), HasSubstr("damaged"));
    writeText(original, bytes + "x");
    EXPECT_THAT(sentence(), HasSubstr("damaged"));
    fs::remove(original);
    EXPECT_THAT(sentence(), HasSubstr("could not be opened"));
    fs::create_directory(original);
    EXPECT_THAT(sentence(), HasSubstr("could not be read"));
}

TEST(Transfers, EndSoonWhenTheyAreCancelled) {
    const ScratchHome home;
    const auto source = writePicture(home.file("a.jpg"), 5000, 4000);
    std::string large = readBytes(source);
    large.resize(40 << 20, 'x'); // bytes behind a picture are no fault of it
    writeText(source, large);
    const auto identifier = *importFile(source).identifier;
    std::promise<std::int32_t> number;
    auto known = number.get_future().share();
    std::promise<std::optional<NSError>> over;
    int chunksAfter = -1;
    const auto id = requestDataForAssetResource(
        resourceOf(identifier, PHAssetResourceTypePhoto), {},
        [&](std::span<const std::uint8_t>) {
            if (++chunksAfter == 0)
                cancelDataRequest(known.get()); // from a handler, as it may
        },
        [&](const std::optional<NSError>& error) { over.set_value(error); });
    number.set_value(id);
    const auto error = over.get_future().get();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain, PHPhotosErrorDomain);
    EXPECT_EQ(error->code, PHPhotosErrorUserCancelled);
    EXPECT_LE(chunksAfter, 1);
    cancelDataRequest(id); // over: nothing happens
    cancelDataRequest(4711);
}

TEST(Edits, StandBesideTheOriginalAndCanBeTakenBack) {
    const ScratchHome home;
    const auto source = writePicture(home.file("a.jpg"), 64, 48);
    const auto identifier = *importFile(source).identifier;
    ASSERT_FALSE(edit(identifier, picture(home, 30, 40, 1)));
    const auto firstEdit = filesBelow(home.library() / "renders");
    EXPECT_EQ(firstEdit.size(), 1u);
    EXPECT_EQ(pixelSizeOf(identifier), "30x40");
    EXPECT_THAT(typesOf(*assetWith(identifier)), ElementsAre(1, 5, 7));
    EXPECT_THAT(typesOf(*listed().objectAtIndex(0)), ElementsAre(1, 5, 7));

    const NSData second = picture(home, 20, 10, 2);
    ASSERT_FALSE(edit(identifier, second));
    EXPECT_NE(filesBelow(home.library() / "renders"), firstEdit);
    EXPECT_EQ(filesBelow(home.library() / "renders").size(), 1u) << "the first one is gone";
    EXPECT_EQ(pixelSizeOf(identifier), "20x10");
    EXPECT_EQ(dataOf(transfer(resourceOf(identifier, PHAssetResourceTypeFullSizePhoto)).bytes),
              second);
    EXPECT_EQ(transfer(resourceOf(identifier, PHAssetResourceTypeAdjustmentData)).bytes, "how");
    EXPECT_EQ(transfer(resourceOf(identifier, PHAssetResourceTypePhoto)).bytes, readBytes(source));
    // Who can handle the earlier edit gets the original, who cannot the edited picture.
    EXPECT_EQ(dataWithContentsOfFile(inputOf(*assetWith(identifier))->fullSizeImageURL->path),
              dataOf(readBytes(source)));
    EXPECT_EQ(
        dataWithContentsOfFile(inputOf(*assetWith(identifier), false)->fullSizeImageURL->path),
        second);

    EXPECT_EQ(local::revertEdits({identifier, "unknown"}), 1u);
    EXPECT_EQ(pixelSizeOf(identifier), "64x48");
    EXPECT_THAT(typesOf(*assetWith(identifier)), ElementsAre(1));
    EXPECT_THAT(filesBelow(home.library() / "renders"), IsEmpty());
    EXPECT_THAT(filesBelow(home.library() / "incoming"), IsEmpty());
    EXPECT_EQ(local::revertEdits({identifier}), 0u);
    EXPECT_EQ(readBytes(originalOf(home, identifier)), readBytes(source));
}

TEST(Edits, TakeOnlyAJpegThatDecodes) {
    const ScratchHome home;
    const auto identifier = *importFile(writePicture(home.file("a.jpg"))).identifier;
    const NSData whole = picture(home, 400, 300, 1);
    const std::vector<std::pair<NSData, std::string>> bad{
        {{}, "empty"},
        {dataOf("\x89PNG\r\n\x1a\n"), "cannot be used"},
        {NSData(whole.begin(), whole.begin() + static_cast<long>(whole.size() / 2)), "damaged"},
        {dataOf(std::string(100'000, 'x')), "cannot be used"},
    };
    for (const auto& [rendered, why] : bad) {
        const auto error = edit(identifier, rendered);
        ASSERT_TRUE(error) << why;
        EXPECT_EQ(error->code, 3302);
        EXPECT_THAT(error->localizedDescription.value_or(""), HasSubstr(why));
    }
    EXPECT_THAT(typesOf(*assetWith(identifier)), ElementsAre(1));
    EXPECT_EQ(pixelSizeOf(identifier), "64x48");
    EXPECT_THAT(filesBelow(home.library() / "renders"), IsEmpty());
    EXPECT_THAT(filesBelow(home.library() / "incoming"), IsEmpty());
}

TEST(Edits, AnInputOutlivesItsAsset) {
    const ScratchHome home;
    const auto source = writePicture(home.file("a.jpg"));
    const auto identifier = *importFile(source).identifier;
    const auto asset = *assetWith(identifier);
    const auto input = inputOf(asset);
    runSql(home, "DELETE FROM asset");
    EXPECT_FALSE(inputOf(asset));
    ASSERT_TRUE(input);
    EXPECT_TRUE(dataWithContentsOfFile(input->fullSizeImageURL->path));
}
