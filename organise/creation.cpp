// New albums and folders. Each is created at the top level and filed into its folder only when it
// exists, in a transaction of its own; when the filing fails, the collection stays where it is.
#include "bridge/arguments.h"
#include "bridge/call_scope.h"
#include "bridge/change_transaction.h"
#include "bridge/collections.h"
#include "bridge/diagnostic_log.h"
#include "bridge/entry_points.h"
#include "bridge/results.h"
#include "organise/filing.h"
#include "platform/collection_change_requests.h"

#include <optional>
#include <string>

namespace {

std::optional<std::string> createAlbum(const std::string& title) {
    return performLoggedCreation("create album", [&] {
        const auto request = platform::creationRequestForAssetCollectionWithTitle(title);
        return platform::placeholderForCreatedAssetCollection(request);
    });
}

std::optional<std::string> createFolder(const std::string& title) {
    return performLoggedCreation("create folder", [&] {
        const auto request = platform::creationRequestForCollectionListWithTitle(title);
        return platform::placeholderForCreatedCollectionList(request);
    });
}

// How the two methods differ: what they make, what they call it, and that only albums tell of a
// parent folder that does not exist.
struct NewCollection {
    const char* kind;
    std::optional<std::string> (*create)(const std::string& title);
    bool logsUnknownParent;
};

constexpr NewCollection newAlbum{"album", createAlbum, true};
constexpr NewCollection newFolder{"folder", createFolder, false};

std::optional<std::string> createAndFile(const NewCollection& collection, const std::string& title,
                                         const std::optional<platform::PHCollectionList>& parent) {
    auto identifier = collection.create(title);
    if (!identifier)
        return std::nullopt;
    photosLogFormatted("created %s %s (%s) parent=%s", collection.kind, title.c_str(),
                       identifier->c_str(), parent ? parent->localIdentifier.c_str() : "top level");
    if (parent && !fileCollectionIntoFolder(identifier, *parent))
        return std::nullopt;
    return identifier;
}

// The parent is looked up before anything is created; an empty identifier is the top level.
std::optional<std::string> createBelow(const NewCollection& collection, const std::string& title,
                                       const std::string& parentIdentifier) {
    if (parentIdentifier.empty())
        return createAndFile(collection, title, std::nullopt);
    const auto parent = folderWithIdentifier(parentIdentifier);
    if (parent)
        return createAndFile(collection, title, parent);
    if (collection.logsUnknownParent)
        photosLogFormatted("create %s: parent folder not found: %s", collection.kind,
                           parentIdentifier.c_str());
    return std::nullopt;
}

jstring create(JNIEnv* env, const NewCollection& collection, jstring title,
               jstring parentFolderId) {
    const auto titleText = stringArgument(env, title);
    if (!titleText || titleText->empty())
        return nullptr;
    const std::string parentIdentifier = stringArgument(env, parentFolderId).value_or("");
    const auto identifier = createBelow(collection, *titleText, parentIdentifier);
    return identifier ? stringResult(env, *identifier) : nullptr;
}

} // namespace

jstring Java_com_morrowfen_lumatrice_service_PhotosService_nativeCreateAlbum(
    JNIEnv* env, jobject, jstring title, jstring parentFolderId) noexcept {
    return inCallScope([&] { return create(env, newAlbum, title, parentFolderId); });
}

jstring Java_com_morrowfen_lumatrice_service_PhotosService_nativeCreateFolder(
    JNIEnv* env, jobject, jstring title, jstring parentFolderId) noexcept {
    return inCallScope([&] { return create(env, newFolder, title, parentFolderId); });
}
