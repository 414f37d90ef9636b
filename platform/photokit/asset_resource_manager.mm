#include "platform/asset_resource_manager.h"

#include "platform/photokit/objects.h"

namespace platform {
// Both blocks run on threads of the library's, which may keep temporary objects for long: each
// call has a scope of its own, so that a file of any size takes the memory of a chunk.
PHAssetResourceDataRequestID
requestDataForAssetResource(const PHAssetResource& resource,
                            const PHAssetResourceRequestOptions& options,
                            std::function<void(std::span<const std::uint8_t>)> dataReceivedHandler,
                            std::function<void(const std::optional<NSError>&)> completionHandler) {
    ::PHAssetResourceRequestOptions* const requestOptions =
        [[[::PHAssetResourceRequestOptions alloc] init] autorelease];
    [requestOptions setNetworkAccessAllowed:options.networkAccessAllowed];
    const auto received = ^(::NSData* data) {
      @autoreleasepool {
          dataReceivedHandler(bytesOf(data));
      }
    };
    const auto completed = ^(::NSError* error) {
      @autoreleasepool {
          completionHandler(errorOf(error));
      }
    };
    return [[::PHAssetResourceManager defaultManager] requestDataForAssetResource:native(resource)
                                                                          options:requestOptions
                                                              dataReceivedHandler:received
                                                                completionHandler:completed];
}

void cancelDataRequest(PHAssetResourceDataRequestID requestID) {
    [[::PHAssetResourceManager defaultManager] cancelDataRequest:requestID];
}
} // namespace platform
