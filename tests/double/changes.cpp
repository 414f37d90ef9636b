// What is asked of assets, albums and folders inside transactions. A request carries the words that
// later calls name it by.
#include "tests/double/fetch_results.h"
#include "tests/double/scripted_library.h"

namespace platform {

using scripted::identifiersIn;
using scripted::library;

namespace {

template <class Request>
Request requestFor(const std::string& words) {
    library().note("request " + words);
    return {std::make_shared<std::string>(words)};
}

template <class Request>
std::optional<Request> changeRequestFor(const std::string& words) {
    auto request = requestFor<Request>(words);
    if (!library().givesChangeRequests)
        return std::nullopt;
    return request;
}

template <class Request>
std::string wordsOf(const Request& request) {
    return *static_cast<const std::string*>(request.object.get());
}

} // namespace

PHAssetChangeRequest changeRequestForAsset(const PHAsset& asset) {
    return {std::make_shared<std::string>("asset " + asset.localIdentifier)};
}

void setFavorite(const PHAssetChangeRequest& request, bool favorite) {
    library().note(wordsOf(request) + (favorite ? ": favourite true" : ": favourite false"));
}

void setHidden(const PHAssetChangeRequest& request, bool hidden) {
    library().note(wordsOf(request) + (hidden ? ": hidden true" : ": hidden false"));
}

void setContentEditingOutput(const PHAssetChangeRequest& request,
                             const PHContentEditingOutput& output) {
    std::string line = wordsOf(request) + ": ";
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
    library().note("delete assets " + identifiersIn(assets));
}

PHAssetCollectionChangeRequest
creationRequestForAssetCollectionWithTitle(const std::string& title) {
    return requestFor<PHAssetCollectionChangeRequest>("new album '" + title + "'");
}

std::optional<PHObjectPlaceholder>
placeholderForCreatedAssetCollection(const PHAssetCollectionChangeRequest&) {
    return scripted::next(library().placeholders, {PHObjectPlaceholder{"new album"}});
}

std::optional<PHAssetCollectionChangeRequest>
changeRequestForAssetCollection(const PHAssetCollection& album) {
    return changeRequestFor<PHAssetCollectionChangeRequest>("album " + album.localIdentifier);
}

void setTitle(const PHAssetCollectionChangeRequest& request, const std::string& title) {
    library().note(wordsOf(request) + ": set title '" + title + "'");
}

void addAssets(const PHAssetCollectionChangeRequest& request,
               const PHFetchResult<PHAsset>& assets) {
    library().note(wordsOf(request) + ": add assets " + identifiersIn(assets));
}

void addAssets(const PHAssetCollectionChangeRequest& request, const std::vector<PHAsset>& assets) {
    for (const PHAsset& asset : assets)
        library().note(wordsOf(request) + ": add asset " + asset.localIdentifier);
}

void removeAssets(const PHAssetCollectionChangeRequest& request,
                  const PHFetchResult<PHAsset>& assets) {
    library().note(wordsOf(request) + ": remove assets " + identifiersIn(assets));
}

void deleteAssetCollections(const PHFetchResult<PHAssetCollection>& albums) {
    library().note("delete albums " + identifiersIn(albums));
}

PHCollectionListChangeRequest creationRequestForCollectionListWithTitle(const std::string& title) {
    return requestFor<PHCollectionListChangeRequest>("new folder '" + title + "'");
}

std::optional<PHObjectPlaceholder>
placeholderForCreatedCollectionList(const PHCollectionListChangeRequest&) {
    return scripted::next(library().placeholders, {PHObjectPlaceholder{"new folder"}});
}

std::optional<PHCollectionListChangeRequest>
changeRequestForCollectionList(const PHCollectionList& folder) {
    return changeRequestFor<PHCollectionListChangeRequest>("folder " + folder.localIdentifier);
}

void setTitle(const PHCollectionListChangeRequest& request, const std::string& title) {
    library().note(wordsOf(request) + ": set title '" + title + "'");
}

void addChildCollections(const PHCollectionListChangeRequest& request,
                         const std::vector<PHCollection>& children) {
    for (const PHCollection& child : children) {
        const std::string identifier =
            std::visit([](const auto& either) { return either.localIdentifier; }, child);
        library().note(wordsOf(request) + ": add " + identifier);
    }
}

void deleteCollectionLists(const PHFetchResult<PHCollectionList>& folders) {
    library().note("delete folders " + identifiersIn(folders));
}

} // namespace platform
