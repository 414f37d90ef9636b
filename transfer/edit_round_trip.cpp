// An asset's picture out to the host's editor, and the rendered result back as an edit. Nothing is
// kept between the two calls: each asks the photo library for an editing input of its own.
#include "bridge/arguments.h"
#include "bridge/call_scope.h"
#include "bridge/change_transaction.h"
#include "bridge/collections.h"
#include "bridge/delivery.h"
#include "bridge/diagnostic_log.h"
#include "bridge/entry_points.h"
#include "platform/asset_change_requests.h"
#include "platform/content_editing.h"
#include "platform/files.h"

#include <optional>
#include <string>
#include <string_view>

namespace {

using EditingInput = std::optional<platform::PHContentEditingInput>;

constexpr jint done = 0;
constexpr jint notStarted = -1;
constexpr jint notEditable = -2;
constexpr jint fileFailed = -3;
constexpr jint changeFailed = -4;

// Claiming to understand every earlier edit is what makes the library hand out the unedited
// picture: the host always starts from there.
platform::PHContentEditingInputRequestOptions editingOptions() {
    return {.networkAccessAllowed = true,
            .canHandleAdjustmentData = [](const platform::PHAdjustmentData&) { return true; }};
}

EditingInput contentEditingInputOf(const platform::PHAsset& asset) {
    const auto delivery = makeDelivery<EditingInput>(std::nullopt);
    platform::requestContentEditingInputWithOptions(
        asset, editingOptions(),
        [delivery](const EditingInput& input) { deliver(*delivery, input); });
    return waitForDelivery(*delivery);
}

jint copyEditingImage(const std::string& identifier, const std::string& destination) {
    const auto asset = firstObject(platform::fetchAssetsWithLocalIdentifiers({identifier}));
    if (!asset)
        return notStarted;
    const EditingInput input =
        contentEditingInputOf(*asset); // keeps its file until the copy is made
    if (!input || !input->fullSizeImageURL)
        return notEditable;
    platform::removeItemAtPath(destination);
    std::optional<platform::NSError> error;
    if (platform::copyItemAtURL(*input->fullSizeImageURL, platform::fileURLWithPath(destination),
                                error))
        return done;
    photosLogFormatted("editing image copy failed: %s", descriptionOrUnknown(error));
    return fileFailed;
}

// By this the host's edits are known in the library for good.
platform::PHAdjustmentData adjustmentDataOfHost() {
    constexpr std::string_view marker = "lumatrice";
    return platform::initWithFormatIdentifier("com.morrowfen.lumatrice.edit", "1",
                                              platform::NSData(marker.begin(), marker.end()));
}

bool writeRenderedContent(const platform::NSData& rendered, const platform::NSURL& location) {
    std::optional<platform::NSError> error;
    if (platform::writeToURL(rendered, location, platform::NSDataWritingAtomic, error))
        return true;
    photosLogFormatted("rendered write failed: %s", descriptionOrUnknown(error));
    return false;
}

jint commitEdit(const platform::PHAsset& asset, const platform::NSData& rendered) {
    const EditingInput input = contentEditingInputOf(asset);
    if (!input)
        return notEditable;
    auto output = platform::initWithContentEditingInput(*input);
    if (!writeRenderedContent(rendered, output.renderedContentURL))
        return fileFailed;
    platform::setAdjustmentData(output, adjustmentDataOfHost());
    const bool committed = performLoggedChanges("apply edit", [&] {
        platform::setContentEditingOutput(platform::changeRequestForAsset(asset), output);
    });
    return committed ? done : changeFailed;
}

// The file comes first: one that cannot be read is told even for an unknown asset, and before the
// library starts to fetch a picture for nothing.
jint applyEdit(const std::string& identifier, const std::string& renderedPath) {
    const auto rendered = platform::dataWithContentsOfFile(renderedPath);
    if (!rendered)
        return fileFailed;
    const auto asset = firstObject(platform::fetchAssetsWithLocalIdentifiers({identifier}));
    return asset ? commitEdit(*asset, *rendered) : notStarted;
}

} // namespace

jint Java_com_morrowfen_lumatrice_service_PhotosService_nativeContentEditingImage(
    JNIEnv* env, jobject, jstring assetId, jstring destinationPath) noexcept {
    return inCallScope([&] {
        const auto texts = stringPairArgument(env, assetId, destinationPath);
        return texts ? copyEditingImage(texts->first, texts->second) : notStarted;
    });
}

jint Java_com_morrowfen_lumatrice_service_PhotosService_nativeApplyEdit(
    JNIEnv* env, jobject, jstring assetId, jstring renderedPath) noexcept {
    return inCallScope([&] {
        const auto texts = stringPairArgument(env, assetId, renderedPath);
        return texts ? applyEdit(texts->first, texts->second) : notStarted;
    });
}
