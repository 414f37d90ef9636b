// Transfers of an asset's files, edits, and taking edits back.
#include "tests/local/support.h"

#include "platform/asset_resource_manager.h"
#include "platform/content_editing.h"
#include "platform/local/change/edits.h"
#include "platform/local/change/revert.h"

#include <algorithm>
#include <future>

namespace {

// What a transfer hands over, or why it does not.
std::string transfer(const PHAssetResource& resource) {
    std::string received;
    std::promise<std::optional<NSError>> over;
    requestDataForAssetResource(
        resource, {.networkAccessAllowed = true},
        [&](std::span<const std::uint8_t> chunk) { received.append(chunk.begin(), chunk.end()); },
        [&](const std::optional<NSError>& error) { over.set_value(error); });
    const auto error = over.get_future().get();
    return error ? error->localizedDescription.value_or("no sentence") : received;
}

std::vector<long> typesOf(const PHAsset& asset) {
    std::vector<long> types;
    for (const auto& resource : assetResourcesForAsset(asset))
        types.push_back(resource.type);
    return types;
}

PHAssetResource resourceOf(const std::string& identifier, long type = PHAssetResourceTypePhoto) {
    const auto all = assetResourcesForAsset(*assetWith(identifier));
    return *std::find_if(all.begin(), all.end(), [=](const auto& one) { return one.type == type; });
}

std::optional<PHContentEditingInput> inputOf(const PHAsset& asset, bool canHandle = true) {
    std::optional<PHContentEditingInput> got;
    PHContentEditingInputRequestOptions options;
    options.networkAccessAllowed = true;
    options.canHandleAdjustmentData = [=](const PHAdjustmentData&) { return canHandle; };
    requestContentEditingInputWithOptions(asset, options, [&](const auto& input) { got = input; });
    return got;
}

// What an editor is given to work on.
std::string given(const std::string& identifier, bool canHandle) {
    return readBytes(inputOf(*assetWith(identifier), canHandle)->fullSizeImageURL->path);
}

// As an editor does it: the input, the rendered file, the commit. Answers why it was refused.
std::string edit(const std::string& identifier, const std::string& rendered) {
    const auto asset = assetWith(identifier).value();
    auto output = initWithContentEditingInput(inputOf(asset).value());
    writeText(output.renderedContentURL.path, rendered);
    output.adjustmentData = initWithFormatIdentifier("editor", "1", dataOf("how"));
    return change([&] { setContentEditingOutput(changeRequestForAsset(asset), output); });
}

std::string picture(const ScratchHome& home, int width, int height, int seed) {
    return readBytes(writePicture(home.file("rendered.jpg"), width, height, seed));
}

std::string pixelSizeOf(const std::string& identifier) {
    const auto asset = assetWith(identifier);
    return std::to_string(asset->pixelWidth) + "x" + std::to_string(asset->pixelHeight);
}

} // namespace

TEST(Transfers, HandOverTheBytesThatWereImportedAndNeverDamage) {
    const ScratchHome home;
    const std::string bytes = readBytes(writePicture(home.file("a.jpg"), 3000, 2000));
    const auto identifier = *importFile(home.file("a.jpg")).identifier;
    const auto resource = resourceOf(identifier);
    EXPECT_EQ(transfer(resource), bytes);
    const fs::path original = originalOf(home, identifier);
    std::string changed = bytes;
    changed[bytes.size() / 2] = static_cast<char>(changed[bytes.size() / 2] ^ 1);
    writeText(original, changed);
    EXPECT_FALSE(inputOf(*assetWith(identifier)));
    for (const std::string& damaged : {changed, bytes.substr(0, bytes.size() - 1), bytes + "x"}) {
        writeText(original, damaged);
        EXPECT_THAT(transfer(resource), HasSubstr("damaged"));
    }
    fs::remove(original);
    EXPECT_THAT(transfer(resource), HasSubstr("could not be opened"));
    fs::create_directory(original);
    EXPECT_THAT(transfer(resource), HasSubstr("could not be read"));
}

TEST(Edits, StandBesideTheOriginalAndCanBeTakenBack) {
    const ScratchHome home;
    const std::string original = readBytes(writePicture(home.file("a.jpg")));
    const auto identifier = *importFile(home.file("a.jpg")).identifier;
    ASSERT_EQ(edit(identifier, picture(home, 30, 40, 1)), "");
    const auto firstEdit = filesBelow(home.library() / "renders");
    EXPECT_EQ(firstEdit.size(), 1u);
    EXPECT_EQ(pixelSizeOf(identifier), "30x40");
    EXPECT_THAT(typesOf(*assetWith(identifier)), ElementsAre(1, 5, 7));
    EXPECT_THAT(typesOf(*listed().objectAtIndex(0)), ElementsAre(1, 5, 7));

    const std::string second = picture(home, 20, 10, 2);
    ASSERT_EQ(edit(identifier, second), "");
    EXPECT_NE(filesBelow(home.library() / "renders"), firstEdit);
    EXPECT_EQ(filesBelow(home.library() / "renders").size(), 1u) << "the first one is gone";
    EXPECT_EQ(pixelSizeOf(identifier), "20x10");
    EXPECT_EQ(transfer(resourceOf(identifier, PHAssetResourceTypeFullSizePhoto)), second);
    EXPECT_EQ(transfer(resourceOf(identifier, PHAssetResourceTypeAdjustmentData)), "how");
    EXPECT_EQ(transfer(resourceOf(identifier)), original);
    EXPECT_EQ(given(identifier, true), original) << "who can handle the earlier edit";
    EXPECT_EQ(given(identifier, false), second);

    EXPECT_EQ(local::revertEdits({identifier, "unknown"}), 1u);
    EXPECT_EQ(pixelSizeOf(identifier), "64x48");
    EXPECT_THAT(typesOf(*assetWith(identifier)), ElementsAre(1));
    EXPECT_THAT(filesBelow(home.library() / "renders"), IsEmpty());
    EXPECT_EQ(local::revertEdits({identifier}), 0u);
    EXPECT_EQ(readBytes(originalOf(home, identifier)), original);

    const std::string whole = picture(home, 400, 300, 1);
    for (const auto& [rendered, why] : {std::pair<std::string, const char*>{"", "empty"},
                                        {"\x89PNG\r\n\x1a\n", "cannot be used"},
                                        {whole.substr(0, whole.size() / 2), "damaged"},
                                        {std::string(100'000, 'x'), "cannot be used"}})
        EXPECT_THAT(edit(identifier, rendered), HasSubstr(why));
    EXPECT_THAT(typesOf(*assetWith(identifier)), ElementsAre(1));
    EXPECT_EQ(pixelSizeOf(identifier), "64x48");
    EXPECT_THAT(filesBelow(home.library() / "renders"), IsEmpty());
    EXPECT_THAT(filesBelow(home.library() / "incoming"), IsEmpty());
}

TEST(Edits, AnInputOutlivesItsAsset) {
    const ScratchHome home;
    const auto asset = *assetWith(*importFile(writePicture(home.file("a.jpg"))).identifier);
    const auto input = inputOf(asset);
    runSql(home, "DELETE FROM asset");
    EXPECT_FALSE(inputOf(asset));
    ASSERT_TRUE(input);
    EXPECT_TRUE(dataWithContentsOfFile(input->fullSizeImageURL->path));
}
