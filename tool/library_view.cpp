#include "tool/library_view.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/catalogue/collection_record.h"
#include "platform/local/library/library.h"
#include "platform/local/library/library_location.h"
#include "platform/local/system/mount_points.h"
#include "platform/photo_library.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <unordered_set>

namespace tool {

namespace {

constexpr std::string_view assetEnding = "/L0/001";
constexpr std::string_view albumEnding = "/L0/040";
constexpr std::size_t uuidLength = 36;

std::string completed(std::string typed, std::string_view ending) {
    std::transform(typed.begin(), typed.end(), typed.begin(),
                   [](unsigned char letter) { return std::toupper(letter); });
    if (typed.size() == uuidLength)
        typed += ending;
    return typed;
}

} // namespace

// A catalogue that is missing beside originals, or a link to nothing, is the library's own finding.
std::optional<std::string> whyThereIsNoLibrary(const std::string& path) {
    struct stat catalogue = {};
    std::error_code error;
    const bool leadsNowhere =
        std::filesystem::is_symlink(path, error) && !std::filesystem::exists(path, error);
    if (leadsNowhere || stat((path + "/library.db").c_str(), &catalogue) == 0 || errno != ENOENT ||
        std::filesystem::exists(path + "/originals", error))
        return std::nullopt;
    if (const auto place = local::unmountedPlaceOf(path))
        return "The photo library's disk is not mounted on " + *place + ".";
    return "There is no photo library yet. The first import makes it: " + path;
}

void requireLibrary() {
    const auto path = local::libraryPath();
    if (const auto why = path ? whyThereIsNoLibrary(*path) : std::nullopt)
        throw Failure(*why);
    requireOrMakeLibrary();
}

void requireOrMakeLibrary() {
    local::Library::open()->connection();
}

void requireAccess() {
    const long access =
        platform::authorizationStatusForAccessLevel(platform::PHAccessLevelReadWrite);
    if (access != platform::PHAuthorizationStatusAuthorized &&
        access != platform::PHAuthorizationStatusLimited)
        throw Failure("Access to the photo library is " + accessName(access) +
                      ", so nothing in it can be seen or added. Allow it with: photos-kit access "
                      "full");
}

std::string accessName(std::int64_t status) {
    switch (status) {
    case platform::PHAuthorizationStatusAuthorized:
        return "full";
    case platform::PHAuthorizationStatusLimited:
        return "limited";
    case platform::PHAuthorizationStatusDenied:
        return "denied";
    default:
        return "restricted";
    }
}

std::string shownIdentifier(const std::string& identifier) {
    return identifier.substr(0, identifier.find('/'));
}

std::vector<std::string> assetIdentifiers(const std::vector<std::string>& typed) {
    std::vector<std::string> identifiers;
    std::unordered_set<std::string> seen;
    for (const std::string& one : typed) {
        std::string identifier = completed(one, assetEnding);
        if (seen.insert(identifier).second)
            identifiers.push_back(std::move(identifier));
    }
    return identifiers;
}

std::string albumIdentifier(const std::string& typed) {
    return completed(typed, albumEnding);
}

platform::PHAssetCollection albumWithIdentifier(const std::string& typed) {
    const auto albums =
        platform::fetchAssetCollectionsWithLocalIdentifiers({albumIdentifier(typed)});
    const auto album = albums.count() > 0 ? albums.objectAtIndex(0) : std::nullopt;
    if (!album)
        throw Failure("There is no album " + typed + ". See photos-kit albums.");
    return *album;
}

platform::PHFetchResult<platform::PHAsset> assetsOf(const platform::PHAssetCollection* album) {
    platform::PHFetchOptions options;
    if (!album || album->assetCollectionType != platform::PHAssetCollectionTypeSmartAlbum)
        options.sortDescriptors = {{"creationDate", false}};
    return album ? platform::fetchAssetsInAssetCollection(*album, &options)
                 : platform::fetchAssetsWithOptions(options);
}

std::string filenameOf(const platform::PHAsset& asset) {
    return local::recordOf(asset).filename;
}

std::string titleOf(const platform::PHCollection& collection) {
    return local::recordOf(collection).title.value_or("Untitled");
}

bool isEdited(const platform::PHAsset& asset) {
    const auto resources = platform::assetResourcesForAsset(asset);
    return std::any_of(resources.begin(), resources.end(), [](const auto& resource) {
        return resource.type == platform::PHAssetResourceTypeFullSizePhoto ||
               resource.type == platform::PHAssetResourceTypeFullSizeVideo;
    });
}

bool isVideo(const platform::PHAsset& asset) {
    return asset.mediaType == platform::PHAssetMediaTypeVideo;
}

// The library gives seconds whose thousandfold, cut to an integer, is exact.
std::int64_t creationMilliseconds(const platform::PHAsset& asset) {
    return static_cast<std::int64_t>(asset.creationDate.value_or(0) * 1000.0);
}

} // namespace tool
