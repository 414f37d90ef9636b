// The bytes of an asset's files, as a stream that can be cancelled.
#pragma once

#include "platform/asset.h"

#include <functional>
#include <span>

namespace platform {

// A data request, by a number that no other request of this process gets: a late cancellation must
// never hit another one.
using PHAssetResourceDataRequestID = std::int32_t;

struct PHAssetResourceRequestOptions {
    bool networkAccessAllowed = false; // whether what lies elsewhere may be fetched, which may wait
};

// Starts reading the resource and answers the request's number; does not wait for the bytes.
//
// `dataReceivedHandler` gets the bytes in file order, in chunks of the library's choosing, one call
// at a time; a resource of no bytes may give no chunk. A chunk is the library's and is gone when
// the handler returns. The library never holds more than a few chunks; a slow handler slows the
// reading.
//
// `completionHandler` is called exactly once, after the last chunk: with nothing when all bytes
// were handed over, else with the error that ended the request. Cancelling gives
// PHPhotosErrorDomain and PHPhotosErrorUserCancelled. Bytes that were handed over before an error
// are right as far as they go, unless the error says that the file is damaged.
//
// Both run on threads of the library's choosing, possibly before this call has returned, and are
// released soon after the completion handler has returned. No exception leaves them.
PHAssetResourceDataRequestID
requestDataForAssetResource(const PHAssetResource& resource,
                            const PHAssetResourceRequestOptions& options,
                            std::function<void(std::span<const std::uint8_t>)> dataReceivedHandler,
                            std::function<void(const std::optional<NSError>&)> completionHandler);

// Makes a running request end soon with the cancellation error; chunks may still come before it.
// Does nothing for a request that is over, or that never was. Returns at once, does not wait for
// the handlers, and may itself be called from one.
void cancelDataRequest(PHAssetResourceDataRequestID requestID);

} // namespace platform
