// Pictures handed out for editing. Inputs and outputs note when their last copy is gone.
#include "tests/double/scripted_library.h"

namespace platform {

using scripted::EditingAnswer;
using scripted::library;

namespace {

std::shared_ptr<void> notedWhenReleased(const char* line) {
    return {new int(0), [line](int* held) {
                library().note(line);
                delete held;
            }};
}

std::optional<PHContentEditingInput> inputOf(const EditingAnswer& answer) {
    if (!answer.hasInput)
        return std::nullopt;
    PHContentEditingInput input;
    if (answer.imagePath)
        input.fullSizeImageURL = fileURLWithPath(*answer.imagePath);
    input.object = notedWhenReleased("release input");
    return input;
}

} // namespace

void requestContentEditingInputWithOptions(
    const PHAsset& asset, const PHContentEditingInputRequestOptions& options,
    std::function<void(const std::optional<PHContentEditingInput>&)> completionHandler) {
    auto& script = library();
    script.note("request editing input of " + asset.localIdentifier +
                (options.networkAccessAllowed ? ", network" : ", no network"));
    for (const PHAdjustmentData& edit : script.earlierEdits)
        script.note("edit of " + edit.formatIdentifier +
                    (options.canHandleAdjustmentData(edit) ? " can be taken up" : " is foreign"));
    script.runHandler(script.editingHandler,
                      [answers = script.editingAnswers, handler = std::move(completionHandler)] {
                          for (const EditingAnswer& answer : answers)
                              handler(inputOf(answer));
                      });
}

PHContentEditingOutput initWithContentEditingInput(const PHContentEditingInput& input) {
    library().note(input.object ? "make output" : "make output of an input that was never made");
    return {.renderedContentURL = fileURLWithPath("/edit/rendered.jpg"),
            .adjustmentData = std::nullopt,
            .object = notedWhenReleased("release output")};
}

void setAdjustmentData(PHContentEditingOutput& output, PHAdjustmentData data) {
    output.adjustmentData = std::move(data);
}

} // namespace platform
