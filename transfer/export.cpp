// An asset's current file, streamed to a path of the host's; and calling that off.
#include "bridge/arguments.h"
#include "bridge/call_scope.h"
#include "bridge/collections.h"
#include "bridge/diagnostic_log.h"
#include "bridge/entry_points.h"
#include "bridge/path_component.h"
#include "platform/asset_resource_manager.h"
#include "platform/file_handle.h"
#include "platform/files.h"
#include "transfer/export_registry.h"

#include <atomic>
#include <memory>
#include <optional>
#include <semaphore>
#include <span>
#include <string>

namespace {

constexpr jint exported = 0;
constexpr jint noAsset = -1;
constexpr jint noResource = -2;
constexpr jint exportFailed = -3;
constexpr jint exportCancelled = -4;

// What both handlers of a transfer tell the call that waits for it. Shared with them, because a
// handler may still be at work here when the call has returned.
struct Outcome {
    std::atomic<jint> status{exported};
    std::counting_semaphore<> completed{0};
};

// The current version of an edited asset wherever it stands, else the first photo or video as it
// was imported. A listing may show the name of another file.
std::optional<platform::PHAssetResource> resourceToExport(const platform::PHAsset& asset) {
    std::optional<platform::PHAssetResource> original;
    for (auto& resource : platform::assetResourcesForAsset(asset)) {
        if (resource.type == platform::PHAssetResourceTypeFullSizePhoto ||
            resource.type == platform::PHAssetResourceTypeFullSizeVideo)
            return std::move(resource);
        if (!original && (resource.type == platform::PHAssetResourceTypePhoto ||
                          resource.type == platform::PHAssetResourceTypeVideo))
            original = std::move(resource);
    }
    return original;
}

// Makes room for the file and opens it, empty. What goes wrong before the file is made shows when
// it is made. A path that could not be read, or an empty one, is nowhere: nothing is removed for
// it.
std::optional<platform::NSFileHandle> openDestination(const std::optional<std::string>& path) {
    if (!path || path->empty())
        return std::nullopt;
    const platform::NSURL url = platform::fileURLWithPath(*path);
    const std::string directory = pathWithoutLastComponent(*path);
    if (!directory.empty())
        platform::createDirectoryAtPath(directory);
    platform::removeItemAtURL(url);
    if (!platform::createFileAtPath(*path))
        return std::nullopt;
    return platform::fileHandleForWritingAtPath(*path);
}

// A failed write does not end the transfer: each later chunk is tried too, and what comes of the
// transfer is still to be learned.
void writeChunk(const platform::NSFileHandle& file, std::span<const std::uint8_t> chunk,
                const std::string& identifier, Outcome& outcome) {
    try {
        platform::writeData(file, chunk);
    } catch (const platform::NSException& exception) {
        const std::string reason = exception.reason.value_or("(unknown)");
        photosLogFormatted("export write failed for %s: %s", identifier.c_str(), reason.c_str());
        outcome.status = exportFailed;
    }
}

// Without an error the outcome of the writes stands. A cancellation is known by its code alone:
// what passes errors on may put a domain of its own on them.
void completeTransfer(const std::optional<platform::NSError>& error, const std::string& identifier,
                      Outcome& outcome) {
    if (error && error->code == platform::PHPhotosErrorUserCancelled) {
        outcome.status = exportCancelled;
    } else if (error) {
        const std::string sentence = error->localizedDescription.value_or("(unknown)");
        photosLogFormatted("export failed for %s: %s", identifier.c_str(), sentence.c_str());
        outcome.status = exportFailed;
    }
    outcome.completed.release();
}

// The order decides what becomes of a cancellation. The export can be found only once its transfer
// has a number, so a cancellation that comes before is lost; and it is found until its file is
// closed, where a cancellation reaches a transfer that is over and changes nothing.
jint transferToFile(const platform::PHAssetResource& resource, const std::string& identifier,
                    const platform::NSFileHandle& file, jint exportRequestId) {
    const platform::PHAssetResourceRequestOptions options{.networkAccessAllowed = true};
    const auto outcome = std::make_shared<Outcome>();
    const auto dataRequestId = platform::requestDataForAssetResource(
        resource, options,
        [file, identifier, outcome](std::span<const std::uint8_t> chunk) {
            writeChunk(file, chunk, identifier, *outcome);
        },
        [identifier, outcome](const std::optional<platform::NSError>& error) {
            completeTransfer(error, identifier, *outcome);
        });
    registerExport(exportRequestId, dataRequestId);
    outcome->completed.acquire();
    platform::closeFile(file);
    unregisterExport(exportRequestId);
    return outcome->status;
}

// Nothing at the destination is touched before it is clear that there is something to export.
jint exportToFile(const std::string& identifier, const std::optional<std::string>& destination,
                  jint exportRequestId) {
    const auto asset = firstObject(platform::fetchAssetsWithLocalIdentifiers({identifier}));
    if (!asset)
        return noAsset;
    const auto resource = resourceToExport(*asset);
    if (!resource)
        return noResource;
    const auto file = openDestination(destination);
    if (!file)
        return exportFailed;
    return transferToFile(*resource, asset->localIdentifier, *file, exportRequestId);
}

} // namespace

jint Java_com_morrowfen_lumatrice_service_PhotosService_nativeExportToFile(
    JNIEnv* env, jobject, jstring assetId, jstring destinationPath, jint exportRequestId) noexcept {
    return inCallScope([&] {
        const auto [identifier, destination] = textsOfStrings(env, assetId, destinationPath);
        return identifier ? exportToFile(*identifier, destination, exportRequestId) : noAsset;
    });
}

void Java_com_morrowfen_lumatrice_service_PhotosService_nativeCancelExport(
    JNIEnv*, jobject, jint exportRequestId) noexcept {
    inCallScope([&] {
        if (const auto dataRequestId = dataRequestOfExport(exportRequestId))
            platform::cancelDataRequest(*dataRequestId);
    });
}
