// What is asked of assets inside transactions.
#include "tests/double/fetch_results.h"
#include "tests/double/scripted_library.h"

namespace platform {

using scripted::library;

namespace {

const std::string& identifierBehind(const PHAssetChangeRequest& request) {
    return *static_cast<const std::string*>(request.object.get());
}

void noteFlag(const PHAssetChangeRequest& request, const char* name, bool value) {
    library().note("asset " + identifierBehind(request) + ": " + name +
                   (value ? " true" : " false"));
}

} // namespace

PHAssetChangeRequest changeRequestForAsset(const PHAsset& asset) {
    return {std::make_shared<std::string>(asset.localIdentifier)};
}

void setFavorite(const PHAssetChangeRequest& request, bool favorite) {
    noteFlag(request, "favourite", favorite);
}

void setHidden(const PHAssetChangeRequest& request, bool hidden) {
    noteFlag(request, "hidden", hidden);
}

void setContentEditingOutput(const PHAssetChangeRequest& request,
                             const PHContentEditingOutput& output) {
    std::string line = "asset " + identifierBehind(request) + ": ";
    if (!output.object)
        line += "an output that was never made";
    else if (!output.adjustmentData)
        line += "an edit without adjustment data";
    else
        line +=
            "edit '" + output.adjustmentData->formatIdentifier + "' '" +
            output.adjustmentData->formatVersion + "' '" +
            std::string(output.adjustmentData->data.begin(), output.adjustmentData->data.end()) +
            "' of '" + library().files[output.renderedContentURL.path] + "'";
    library().note(line);
}

void deleteAssets(const PHFetchResult<PHAsset>& assets) {
    library().note("delete assets " + scripted::identifiersIn(assets));
}

} // namespace platform
