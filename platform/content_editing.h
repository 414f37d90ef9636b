// Taking an asset's picture out for editing, and what an edit gives back.
#pragma once

#include "platform/asset.h"

#include <functional>

namespace platform {

// What an editor keeps with its edit, so that it can tell and take up its own edits later.
struct PHAdjustmentData {
    std::string formatIdentifier;
    std::string formatVersion;
    NSData data;
};

inline PHAdjustmentData initWithFormatIdentifier(std::string formatIdentifier,
                                                 std::string formatVersion, NSData data) {
    return PHAdjustmentData{std::move(formatIdentifier), std::move(formatVersion), std::move(data)};
}

// Back ends hand the options on in the order of these members.
struct PHContentEditingInputRequestOptions {
    bool networkAccessAllowed = false; // whether what lies elsewhere may be fetched, which may wait
    // Asked, on a thread of the library's choosing, about the data of the edit that the asset has;
    // not asked when it has none. Yes: the input is the unedited picture. No, or no test: it is the
    // edited one.
    std::function<bool(const PHAdjustmentData&)> canHandleAdjustmentData;
};

// A picture as it is handed out for editing.
struct PHContentEditingInput {
    // A whole file, to be read only; none for an asset that has no picture of its own, such as a
    // video. It stays where it is until the last copy of this input is gone.
    std::optional<NSURL> fullSizeImageURL;
    Object object;
};

// Asks for the asset's picture for editing and returns at once. `completionHandler` gets nothing
// when the asset cannot be edited, is gone, or its file cannot be had. It is called once, on a
// thread of the library's choosing, possibly before this call has returned; callers survive a
// second call. No exception leaves it.
void requestContentEditingInputWithOptions(
    const PHAsset& asset, const PHContentEditingInputRequestOptions& options,
    std::function<void(const std::optional<PHContentEditingInput>&)> completionHandler);

// An edit on its way in.
struct PHContentEditingOutput {
    // Where the editor writes the rendered picture; nothing stands there at first. It lies in a
    // folder of this output's own, which the library removes when the last copy of the output is
    // gone. A place that cannot be had shows when it is written to.
    NSURL renderedContentURL;
    std::optional<PHAdjustmentData> adjustmentData; // set by setAdjustmentData
    std::shared_ptr<void> object;
};

// An edit of what the input came from. Both keep what they need: either may go first.
PHContentEditingOutput initWithContentEditingInput(const PHContentEditingInput& input);

// Puts the data beside the edit; to be called before the output is given to a change request.
void setAdjustmentData(PHContentEditingOutput& output, PHAdjustmentData data);

} // namespace platform
