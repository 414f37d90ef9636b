// Editing inputs and outputs. An input's picture is an open file, named through its descriptor: it
// is there as long as the input is, whatever becomes of the asset, and nothing is left to remove.
#include "platform/content_editing.h"

#include "platform/asset_change_requests.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/change/change_transaction.h"
#include "platform/local/change/edits.h"
#include "platform/local/library/library.h"
#include "platform/local/library/stored_bytes.h"
#include "platform/local/store/edit_folder.h"
#include "platform/local/system/guarded.h"

#include <algorithm>

namespace local {

namespace {

using platform::PHAdjustmentData;
using platform::PHContentEditingInput;

std::string pathOfDescriptor(int file) {
    return "/proc/self/fd/" + std::to_string(file);
}

// The edit that the asset has now.
std::optional<PHAdjustmentData> adjustmentDataOf(std::int64_t asset) {
    const ConnectionLease connection = Library::open()->connection();
    Statement row = connection->statement(
        "SELECT format_identifier, format_version, data FROM edit WHERE asset = ?1");
    if (!row.bind(1, asset).step())
        return std::nullopt;
    const auto data = row.blob(2);
    return PHAdjustmentData{std::string(row.text(0)), std::string(row.text(1)),
                            platform::NSData(data.begin(), data.end())};
}

bool wantsRendering(std::int64_t asset,
                    const platform::PHContentEditingInputRequestOptions& options) {
    const auto earlier = adjustmentDataOf(asset);
    return earlier &&
           !(options.canHandleAdjustmentData && options.canHandleAdjustmentData(*earlier));
}

PHContentEditingInput inputOf(const AssetRecord& record,
                              const platform::PHContentEditingInputRequestOptions& options) {
    if (record.media != platform::PHAssetMediaTypeImage)
        return {};
    const long type = wantsRendering(record.n, options) ? platform::PHAssetResourceTypeFullSizePhoto
                                                        : platform::PHAssetResourceTypePhoto;
    auto stored = std::make_shared<StoredBytes>(openResource(record.n, type));
    if (!isIntact(*stored))
        throw damagedFile(type);
    PHContentEditingInput input;
    input.fullSizeImageURL = platform::fileURLWithPath(pathOfDescriptor(stored->file.get()));
    input.object = std::move(stored);
    return input;
}

// Behind an output: the folder lies in the library, which stays open as long as it does.
struct OutputPlace {
    std::shared_ptr<Library> library;
    EditFolder folder;

    explicit OutputPlace(std::shared_ptr<Library> opened)
        : library(std::move(opened)), folder(library->files()) {}
};

} // namespace

} // namespace local

namespace platform {

void requestContentEditingInputWithOptions(
    const PHAsset& asset, const PHContentEditingInputRequestOptions& options,
    std::function<void(const std::optional<PHContentEditingInput>&)> completionHandler) {
    using Answer = std::optional<PHContentEditingInput>;
    const auto answer = std::move(completionHandler);
    answer(local::orElse<Answer>({}, [&]() -> Answer {
        if (!asset.object)
            return std::nullopt;
        return local::inputOf(local::recordOf(asset), options);
    }));
}

PHContentEditingOutput initWithContentEditingInput(const PHContentEditingInput&) {
    PHContentEditingOutput output;
    try {
        const auto place = std::make_shared<local::OutputPlace>(local::Library::open());
        output.renderedContentURL = fileURLWithPath(
            local::pathOfDescriptor(place->folder.descriptor()) + "/" + local::renderedName);
        output.object = place;
    } catch (const std::exception&) {
        // There is no such place: writing to it tells.
    }
    return output;
}

void setContentEditingOutput(const PHAssetChangeRequest& request,
                             const PHContentEditingOutput& output) {
    local::ChangeTransaction* const transaction = local::ChangeTransaction::current();
    if (!transaction || !request.object)
        return;
    const auto place = std::static_pointer_cast<local::OutputPlace>(output.object);
    if (!place || !output.adjustmentData) {
        transaction->steps.emplace_back([](local::CatalogueConnection&) {
            throw local::LibraryError(PHPhotosErrorDomain, local::invalidResourceCode,
                                      "An edit needs a rendered picture and adjustment data.");
        });
        return;
    }
    transaction->edits.push_back({static_cast<const local::AssetRecord*>(request.object.get())->n,
                                  {place, &place->folder},
                                  *output.adjustmentData});
}

void setAdjustmentData(PHContentEditingOutput& output, PHAdjustmentData data) {
    output.adjustmentData = std::move(data);
}

} // namespace platform
