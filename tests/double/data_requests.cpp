// Streams of a resource's bytes.
#include "tests/double/scripted_library.h"

#include <chrono>

namespace platform {

using scripted::library;
using scripted::Transfer;

namespace {

using DataHandler = std::function<void(std::span<const std::uint8_t>)>;
using CompletionHandler = std::function<void(const std::optional<NSError>&)>;

void handOver(const std::vector<std::string>& chunks, const DataHandler& handler) {
    for (const std::string& chunk : chunks)
        handler(std::vector<std::uint8_t>(chunk.begin(), chunk.end()));
}

// A cancellation that does not come ends the wait all the same, with another error: a test that
// waits for it fails instead of standing still.
NSError cancellationOf(PHAssetResourceDataRequestID requestID) {
    auto& script = library();
    std::unique_lock lock(script.mutex);
    const bool came = script.cancelled.wait_for(lock, std::chrono::seconds(20), [&] {
        return script.cancelledRequests.contains(requestID);
    });
    return {.domain = std::string(PHPhotosErrorDomain),
            .code = came ? PHPhotosErrorUserCancelled : 1,
            .localizedDescription = "nobody cancelled"};
}

void run(const Transfer& transfer, PHAssetResourceDataRequestID requestID,
         const DataHandler& dataHandler, const CompletionHandler& completionHandler) {
    handOver(transfer.chunks, dataHandler);
    if (!transfer.runsUntilCancelled) {
        completionHandler(transfer.error);
        return;
    }
    const NSError cancellation = cancellationOf(requestID);
    handOver(transfer.chunksAfterCancel, dataHandler);
    completionHandler(cancellation);
}

} // namespace

PHAssetResourceDataRequestID
requestDataForAssetResource(const PHAssetResource& resource,
                            const PHAssetResourceRequestOptions& options,
                            std::function<void(std::span<const std::uint8_t>)> dataReceivedHandler,
                            std::function<void(const std::optional<NSError>&)> completionHandler) {
    auto& script = library();
    script.note("request data of " + resource.originalFilename.value_or("(nil)") +
                (options.networkAccessAllowed ? ", network" : ", no network"));
    Transfer transfer;
    PHAssetResourceDataRequestID requestID = 0;
    {
        const std::lock_guard lock(script.mutex);
        requestID = script.nextDataRequest++;
        transfer = scripted::next(script.transfers);
    }
    script.runHandler(transfer.handlers,
                      [transfer, requestID, dataHandler = std::move(dataReceivedHandler),
                       completion = std::move(completionHandler)] {
                          run(transfer, requestID, dataHandler, completion);
                      });
    script.note("data request " + std::to_string(requestID));
    return requestID;
}

void cancelDataRequest(PHAssetResourceDataRequestID requestID) {
    auto& script = library();
    script.note("cancel data request " + std::to_string(requestID));
    const std::lock_guard lock(script.mutex);
    script.cancelledRequests.insert(requestID);
    script.cancelled.notify_all();
}

} // namespace platform
