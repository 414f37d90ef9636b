// Fetches, the files of assets, and files of the operating system.
#include "tests/double/scripted_library.h"

namespace platform {

using scripted::library;

namespace {

struct Snapshot {
    std::vector<std::optional<PHAsset>> assets;
    std::size_t count = 0;
};

PHFetchResult<PHAsset> resultOf(Snapshot snapshot) {
    PHFetchResult<PHAsset> result;
    result.object = std::make_shared<Snapshot>(std::move(snapshot));
    return result;
}

std::string joined(const std::vector<std::string>& texts) {
    std::string line;
    for (const std::string& text : texts)
        line += (line.empty() ? "" : ",") + text;
    return line;
}

} // namespace

template <>
std::size_t PHFetchResult<PHAsset>::count() const {
    return static_cast<const Snapshot*>(object.get())->count;
}

template <>
std::optional<PHAsset> PHFetchResult<PHAsset>::objectAtIndex(std::size_t index) const {
    library().note("asset at " + std::to_string(index));
    return static_cast<const Snapshot*>(object.get())->assets.at(index);
}

PHFetchResult<PHAsset> fetchAssetsWithOptions(const PHFetchOptions& options) {
    std::string line = "fetch all assets";
    for (const NSSortDescriptor& descriptor : options.sortDescriptors)
        line += ", by " + descriptor.key + (descriptor.ascending ? " ascending" : " descending");
    library().note(line);
    const auto& script = library();
    return resultOf({script.assets, script.countClaimed.value_or(script.assets.size())});
}

PHFetchResult<PHAsset>
fetchAssetsWithLocalIdentifiers(const std::vector<std::string>& identifiers) {
    library().note("fetch assets " + joined(identifiers));
    const std::set<std::string> wanted(identifiers.begin(), identifiers.end());
    Snapshot found;
    for (const auto& asset : library().assets) {
        if (asset && wanted.contains(asset->localIdentifier))
            found.assets.push_back(asset);
    }
    found.count = found.assets.size();
    if (library().firstFoundIsNil)
        found = {{std::nullopt}, 1};
    return resultOf(std::move(found));
}

std::vector<PHAssetResource> assetResourcesForAsset(const PHAsset& asset) {
    const auto found = library().resources.find(asset.localIdentifier);
    return found == library().resources.end() ? std::vector<PHAssetResource>() : found->second;
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
