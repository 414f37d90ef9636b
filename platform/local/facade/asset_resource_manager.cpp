// Transfers of resources: each on a thread of its own, which reads, hands over and checks. While
// one runs it holds an open file and a chunk, neither a connection nor a lock.
#include "platform/asset_resource_manager.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/library/stored_bytes.h"
#include "platform/local/store/content_hasher.h"
#include "platform/local/system/guarded.h"
#include "platform/local/system/quiet_thread.h"

#include <fcntl.h>

#include <atomic>
#include <cerrno>
#include <map>
#include <mutex>

namespace local {

namespace {

// Fits the second-level cache, where the reader, the hash and the writer meet it.
constexpr std::size_t chunkSize = std::size_t{512} << 10;

using Cancelled = std::shared_ptr<std::atomic<bool>>;

// The transfers that run, by number.
struct Running {
    std::mutex mutex;
    std::int32_t lastNumber = 0;
    std::map<std::int32_t, Cancelled> transfers;
};

Running& running() {
    static auto* const shared = new Running; // transfers may outlive the main function
    return *shared;
}

std::pair<std::int32_t, Cancelled> registerTransfer() {
    Running& all = running();
    const std::scoped_lock lock(all.mutex);
    auto cancelled = std::make_shared<std::atomic<bool>>(false);
    all.transfers.emplace(++all.lastNumber, cancelled);
    return {all.lastNumber, std::move(cancelled)};
}

void unregisterTransfer(std::int32_t number) {
    Running& all = running();
    const std::scoped_lock lock(all.mutex);
    all.transfers.erase(number);
}

struct Transfer {
    std::int32_t number = 0;
    Cancelled cancelled;
    std::int64_t asset = 0;
    long resourceType = 0;
    std::function<void(std::span<const std::uint8_t>)> take;
    std::function<void(const std::optional<platform::NSError>&)> complete;
};

void throwWhenCancelled(const Transfer& transfer) {
    if (*transfer.cancelled)
        throw LibraryError(platform::PHPhotosErrorDomain, platform::PHPhotosErrorUserCancelled,
                           "The transfer was cancelled.");
}

void handOverData(const Transfer& transfer, std::span<const std::uint8_t> data) {
    throwWhenCancelled(transfer);
    if (!data.empty())
        transfer.take(data);
}

void handOverFile(const Transfer& transfer, const StoredBytes& stored) {
    posix_fadvise(stored.file.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
    const std::unique_ptr<std::uint8_t[]> chunk(new std::uint8_t[chunkSize]);
    ContentHasher hasher;
    for (;;) {
        throwWhenCancelled(transfer);
        const ssize_t got = read(stored.file.get(), chunk.get(), chunkSize);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            throw systemError("The asset's file could not be read", errno);
        if (got == 0)
            break;
        const auto size = static_cast<std::size_t>(got);
        hasher.take(chunk.get(), size);
        transfer.take({chunk.get(), size});
    }
    if (!hasher.matches(stored.hash, stored.size))
        throw damagedFile(transfer.resourceType);
}

void handOver(const Transfer& transfer) {
    const StoredBytes stored = openResource(transfer.asset, transfer.resourceType);
    if (stored.file)
        handOverFile(transfer, stored);
    else
        handOverData(transfer, stored.data);
}

// The number is given back before the end is told: a cancellation that comes later finds nothing.
void run(const Transfer& transfer) {
    std::optional<platform::NSError> error;
    try {
        handOver(transfer);
    } catch (const LibraryError& failure) {
        error = failure.error();
    } catch (const std::exception& failure) {
        error = platform::NSError{std::string(platform::PHPhotosErrorDomain), 0, failure.what()};
    }
    unregisterTransfer(transfer.number);
    transfer.complete(error);
}

} // namespace

} // namespace local

namespace platform {

PHAssetResourceDataRequestID
requestDataForAssetResource(const PHAssetResource& resource, const PHAssetResourceRequestOptions&,
                            std::function<void(std::span<const std::uint8_t>)> dataReceivedHandler,
                            std::function<void(const std::optional<NSError>&)> completionHandler) {
    auto [number, cancelled] = local::registerTransfer();
    const auto transfer = std::make_shared<local::Transfer>();
    transfer->number = number;
    transfer->cancelled = std::move(cancelled);
    transfer->resourceType = resource.type;
    transfer->take = std::move(dataReceivedHandler);
    transfer->complete = std::move(completionHandler);
    if (resource.object)
        transfer->asset = static_cast<const local::AssetRecord*>(resource.object.get())->n;
    if (!local::startQuietThread([transfer] { local::run(*transfer); }))
        local::run(*transfer); // no thread to be had: the caller's does the work
    return number;
}

void cancelDataRequest(PHAssetResourceDataRequestID requestID) {
    local::Running& all = local::running();
    const std::scoped_lock lock(all.mutex);
    const auto found = all.transfers.find(requestID);
    if (found != all.transfers.end())
        *found->second = true;
}

} // namespace platform
