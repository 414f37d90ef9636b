#include "platform/content_editing.h"

#include "platform/photokit/objects.h"

namespace platform {
static PHAdjustmentData recordOf(::PHAdjustmentData* data) {
    return {textOf([data formatIdentifier]).value_or(""), textOf([data formatVersion]).value_or(""),
            copyOf([data data])};
}

static std::optional<PHContentEditingInput> recordOf(::PHContentEditingInput* input) {
    if (input == nil)
        return std::nullopt;
    PHContentEditingInput record{.object = retained(input)};
    if (auto path = textOf([[input fullSizeImageURL] path]))
        record.fullSizeImageURL = fileURLWithPath(std::move(*path));
    return record;
}

static ::PHContentEditingInputRequestOptions*
nativeOptions(const PHContentEditingInputRequestOptions& options) {
    ::PHContentEditingInputRequestOptions* const result =
        [[[::PHContentEditingInputRequestOptions alloc] init] autorelease];
    [result setNetworkAccessAllowed:options.networkAccessAllowed];
    if (const auto canHandle = options.canHandleAdjustmentData) {
        [result setCanHandleAdjustmentData:^BOOL(::PHAdjustmentData* data) {
          @autoreleasepool {
              return canHandle(recordOf(data));
          }
        }];
    }
    return result;
}

void requestContentEditingInputWithOptions(
    const PHAsset& asset, const PHContentEditingInputRequestOptions& options,
    std::function<void(const std::optional<PHContentEditingInput>&)> completionHandler) {
    const auto completed = ^(::PHContentEditingInput* input, NSDictionary*) {
      @autoreleasepool {
          completionHandler(recordOf(input));
      }
    };
    [native(asset) requestContentEditingInputWithOptions:nativeOptions(options)
                                       completionHandler:completed];
}

PHContentEditingOutput initWithContentEditingInput(const PHContentEditingInput& input) {
    ::PHContentEditingOutput* const output =
        [[::PHContentEditingOutput alloc] initWithContentEditingInput:native(input)];
    return {.renderedContentURL = {textOf([[output renderedContentURL] path]).value_or("")},
            .object = adopted(output)};
}

void setAdjustmentData(PHContentEditingOutput& output, PHAdjustmentData data) {
    ::PHAdjustmentData* const adjustmentData = [[[::PHAdjustmentData alloc]
        initWithFormatIdentifier:native(data.formatIdentifier)
                   formatVersion:native(data.formatVersion)
                            data:[::NSData dataWithBytes:data.data.data()
                                                  length:data.data.size()]] autorelease];
    [native(output) setAdjustmentData:adjustmentData];
    output.adjustmentData = std::move(data);
}
} // namespace platform
