// Fetches of assets, their files, and files of the operating system.
#include "tests/double/fetch_results.h"
#include "tests/double/scripted_library.h"

namespace scripted {

std::string joined(const std::vector<std::string>& texts) {
    std::string line;
    for (const std::string& text : texts)
        line += (line.empty() ? "" : ",") + text;
    return line;
}

std::string describe(const platform::PHFetchOptions& options) {
    std::string line;
    for (const auto& descriptor : options.sortDescriptors)
        line += ", by " + descriptor.key + (descriptor.ascending ? " ascending" : " descending");
    if (options.predicate)
        line += ", where " + options.predicate->format + " of " + options.predicate->argument;
    return line;
}

} // namespace scripted

namespace platform {

using scripted::library;
using scripted::Records;
using scripted::resultOf;

PHFetchResult<PHAsset> fetchAssetsWithOptions(const PHFetchOptions& options) {
    library().note("fetch all assets" + scripted::describe(options));
    return resultOf(library().assets, library().countClaimed);
}

PHFetchResult<PHAsset>
fetchAssetsWithLocalIdentifiers(const std::vector<std::string>& identifiers) {
    library().note("fetch assets " + scripted::joined(identifiers));
    if (library().firstFoundIsNil)
        return resultOf<PHAsset>({std::nullopt});
    const std::set<std::string> wanted(identifiers.begin(), identifiers.end());
    Records<PHAsset> found;
    for (const auto& asset : library().assets) {
        if (asset && wanted.contains(asset->localIdentifier))
            found.push_back(asset);
    }
    return resultOf(std::move(found));
}

std::vector<PHAssetResource> assetResourcesForAsset(const PHAsset& asset) {
    return scripted::listUnder(asset.localIdentifier, library().resources);
}

bool isReadableFileAtPath(const std::string& path) {
    library().note("readable? " + path);
    return library().readablePaths.contains(path);
}

std::optional<UTType> contentTypeOfFileAtURL(const NSURL& url) {
    const auto found = library().contentTypes.find(url.path);
    if (found == library().contentTypes.end())
        return std::nullopt;
    return found->second;
}

bool conformsToType(const UTType& type, const UTType& other) {
    return other.identifier == UTTypeMovie.identifier &&
           library().movieTypes.contains(type.identifier);
}

} // namespace platform
