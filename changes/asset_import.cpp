// Adding files as new assets, each in a transaction of its own: a file that fails costs only its
// own place in the result.
#include "bridge/arguments.h"
#include "bridge/call_scope.h"
#include "bridge/diagnostic_log.h"
#include "bridge/entry_points.h"
#include "bridge/path_component.h"
#include "bridge/results.h"
#include "platform/asset.h"
#include "platform/change_requests.h"
#include "platform/files.h"
#include "platform/photo_library.h"

#include <optional>
#include <string>
#include <vector>

namespace {

// A file whose content type cannot be told goes in as a photo.
long resourceTypeOfFile(const platform::NSURL& fileURL) {
    const auto contentType = platform::contentTypeOfFileAtURL(fileURL);
    const bool isMovie =
        contentType && platform::conformsToType(*contentType, platform::UTTypeMovie);
    return isMovie ? platform::PHAssetResourceTypeVideo : platform::PHAssetResourceTypePhoto;
}

// One line for each resource that the library made of the file; none when the new asset cannot
// be fetched.
void logImportedResources(const std::string& filename, const std::string& identifier) {
    const auto assets = platform::fetchAssetsWithLocalIdentifiers({identifier});
    if (assets.count() == 0)
        return;
    const auto asset = assets.objectAtIndex(0);
    if (!asset)
        return;
    for (const auto& resource : platform::assetResourcesForAsset(*asset)) {
        const std::string originalFilename = resource.originalFilename.value_or("");
        const std::string type = resource.uniformTypeIdentifier.value_or("");
        photosLogFormatted("imported %s as %s: resource type=%ld originalFilename='%s' uti=%s",
                           filename.c_str(), identifier.c_str(), resource.type,
                           originalFilename.c_str(), type.c_str());
    }
}

// The new asset's identifier, or nothing after logging why.
std::optional<std::string> importFile(const std::string& path) {
    if (!platform::isReadableFileAtPath(path)) {
        photosLogFormatted("import skipped (unreadable): %s", path.c_str());
        return std::nullopt;
    }
    const platform::NSURL fileURL = platform::fileURLWithPath(path);
    const long resourceType = resourceTypeOfFile(fileURL);
    const std::string filename = lastPathComponent(path);
    const platform::PHAssetResourceCreationOptions options{.shouldMoveFile = false,
                                                           .originalFilename = filename};
    std::optional<std::string> newIdentifier;
    std::optional<platform::NSError> error;
    const bool done = platform::performChangesAndWait(
        [&] {
            const auto request = platform::creationRequestForAsset();
            platform::addResourceWithType(request, resourceType, fileURL, options);
            if (const auto placeholder = platform::placeholderForCreatedAsset(request))
                newIdentifier = placeholder->localIdentifier;
        },
        error);
    // A transaction that is done but made nothing that can be named counts as failed.
    if (!done || !newIdentifier) {
        photosLogFormatted("import failed for %s: %s", filename.c_str(),
                           descriptionOrUnknown(error));
        return std::nullopt;
    }
    logImportedResources(filename, *newIdentifier);
    return newIdentifier;
}

void storeElement(JNIEnv* env, jobjectArray array, jsize index, const std::string& text) {
    const jstring element = stringResult(env, text);
    if (element == nullptr)
        return;
    env->SetObjectArrayElement(array, index, element);
    env->DeleteLocalRef(element);
}

} // namespace

jobjectArray
Java_com_morrowfen_lumatrice_service_PhotosService_nativeImportAssets(JNIEnv* env, jobject,
                                                                      jobjectArray paths) noexcept {
    return inCallScope([&]() -> jobjectArray {
        const std::vector<std::string> usablePaths = stringArrayArgument(env, paths);
        if (usablePaths.empty())
            return nullptr;
        const jclass stringClass = env->FindClass("java/lang/String");
        if (stringClass == nullptr)
            return nullptr;
        const auto length = static_cast<jsize>(usablePaths.size());
        const jobjectArray identifiers = env->NewObjectArray(length, stringClass, nullptr);
        if (identifiers == nullptr)
            return nullptr;
        // Positions follow the usable paths, not the host's array: an element that was dropped
        // takes no place, a file that fails does.
        jsize position = -1;
        for (const std::string& path : usablePaths) {
            ++position;
            if (const auto identifier = importFile(path))
                storeElement(env, identifiers, position, *identifier);
        }
        return identifiers;
    });
}
