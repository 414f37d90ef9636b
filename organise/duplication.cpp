// Copies of albums, and of folders with all that is in them. Each collection is created and then
// filed in transactions of its own; what was made before something fails stays.
#include "bridge/arguments.h"
#include "bridge/call_scope.h"
#include "bridge/change_transaction.h"
#include "bridge/collections.h"
#include "bridge/entry_points.h"
#include "bridge/results.h"
#include "organise/copy_title.h"
#include "organise/filing.h"
#include "platform/collection_change_requests.h"

#include <cstddef>
#include <optional>
#include <set>
#include <stack>
#include <string>
#include <utility>
#include <variant>

namespace {

using platform::PHAssetCollection;
using platform::PHCollection;
using platform::PHCollectionList;
using platform::PHFetchResult;

// A folder whose copy stands, and what is to be copied into it.
struct OpenFolder {
    PHCollectionList copy;
    PHFetchResult<PHCollection> children;
    std::size_t nextChild = 0;
};

using OpenFolders = std::stack<OpenFolder>;

// A copy that could not be filed counts as made all the same; filing logs what went wrong.
void fileCopy(const std::string& identifier, const std::optional<PHCollectionList>& parent) {
    if (parent)
        static_cast<void>(fileCollectionIntoFolder(identifier, *parent));
}

std::optional<std::string> duplicateAlbum(const PHAssetCollection& source,
                                          const std::optional<PHCollectionList>& parent,
                                          const std::string& title) {
    const auto assets = platform::fetchAssetsInAssetCollection(source, nullptr);
    auto identifier = performLoggedCreation("duplicate album", [&] {
        const auto request = platform::creationRequestForAssetCollectionWithTitle(title);
        if (assets.count() != 0)
            platform::addAssets(request, assets);
        return platform::placeholderForCreatedAssetCollection(request);
    });
    if (identifier)
        fileCopy(*identifier, parent);
    return identifier;
}

// Leaves the children to be copied by the caller.
std::optional<std::string> duplicateFolder(const PHCollectionList& source,
                                           const std::optional<PHCollectionList>& parent,
                                           const std::string& title, OpenFolders& openFolders) {
    auto identifier = performLoggedCreation("duplicate folder", [&] {
        const auto request = platform::creationRequestForCollectionListWithTitle(title);
        return platform::placeholderForCreatedCollectionList(request);
    });
    if (!identifier)
        return std::nullopt;
    fileCopy(*identifier, parent);
    auto copy = folderWithIdentifier(*identifier);
    if (!copy)
        return std::nullopt;
    openFolders.push({std::move(*copy), platform::fetchCollectionsInCollectionList(source)});
    return identifier;
}

std::optional<std::string> duplicateOne(const PHCollection& source,
                                        const std::optional<PHCollectionList>& parent,
                                        const std::string& title, OpenFolders& openFolders) {
    if (const auto* const album = std::get_if<PHAssetCollection>(&source))
        return duplicateAlbum(*album, parent, title);
    return duplicateFolder(std::get<PHCollectionList>(source), parent, title, openFolders);
}

// Recurses over the tree, each child and all below it before the next child. The recursion lives
// on the heap: folders may be nested deeper than the stack of a host's thread has room for. A
// child that cannot be copied is skipped.
std::optional<std::string> duplicateCollectionInto(const PHCollection& source,
                                                   const std::optional<PHCollectionList>& parent,
                                                   const std::string& title) {
    OpenFolders openFolders;
    auto identifier = duplicateOne(source, parent, title, openFolders);
    while (!openFolders.empty()) {
        OpenFolder& folder = openFolders.top();
        if (folder.nextChild >= folder.children.count()) {
            openFolders.pop();
            continue;
        }
        const auto child = folder.children.objectAtIndex(folder.nextChild++);
        if (child)
            duplicateOne(*child, folder.copy, titleOfCollection(*child).value_or("Untitled"),
                         openFolders);
    }
    return identifier;
}

std::set<std::string> titlesBeside(const std::optional<PHCollectionList>& parent) {
    const auto siblings = parent ? platform::fetchCollectionsInCollectionList(*parent)
                                 : platform::fetchTopLevelUserCollections();
    std::set<std::string> titles;
    const std::size_t total = siblings.count();
    for (std::size_t index = 0; index < total; ++index) {
        const auto sibling = siblings.objectAtIndex(index);
        if (!sibling)
            continue;
        if (auto title = titleOfCollection(*sibling))
            titles.insert(std::move(*title));
    }
    return titles;
}

std::optional<std::string> duplicateBesideSource(const std::string& identifier) {
    const auto source = collectionWithIdentifier(identifier);
    if (!source)
        return std::nullopt;
    const auto* const album = std::get_if<PHAssetCollection>(&*source);
    if (album != nullptr && isSmartAlbum(*album))
        return std::nullopt;
    const auto parent = firstObject(platform::fetchCollectionListsContainingCollection(*source));
    const std::string title = titleForCopy(titleOfCollection(*source), titlesBeside(parent));
    return duplicateCollectionInto(*source, parent, title);
}

} // namespace

jstring Java_com_morrowfen_lumatrice_service_PhotosService_nativeDuplicateCollection(
    JNIEnv* env, jobject, jstring collectionId) noexcept {
    return inCallScope([&]() -> jstring {
        const auto identifier = stringArgument(env, collectionId);
        if (!identifier)
            return nullptr;
        const auto copy = duplicateBesideSource(*identifier);
        return copy ? stringResult(env, *copy) : nullptr;
    });
}
