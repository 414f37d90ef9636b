// Assets (photos and videos), their files, and the fetches that find them.
#pragma once

#include "platform/foundation.h"

namespace platform {

enum PHAssetMediaType : long {
    PHAssetMediaTypeUnknown = 0,
    PHAssetMediaTypeImage = 1,
    PHAssetMediaTypeVideo = 2,
    PHAssetMediaTypeAudio = 3,
};

// One asset as it stood when it was fetched. Later changes do not show in it.
struct PHAsset {
    std::string localIdentifier;
    long mediaType = PHAssetMediaTypeUnknown; // a PHAssetMediaType, or a value added later
    unsigned long pixelWidth = 0;             // as displayed, orientation applied
    unsigned long pixelHeight = 0;
    std::optional<double> creationDate; // timeIntervalSince1970: seconds, fractions kept
    bool isFavorite = false;
    bool isHidden = false;
    Object object;
};

enum PHAssetResourceType : long {
    PHAssetResourceTypePhoto = 1,
    PHAssetResourceTypeVideo = 2,
    PHAssetResourceTypeAudio = 3,
    PHAssetResourceTypeAlternatePhoto = 4,
    PHAssetResourceTypeFullSizePhoto = 5,
    PHAssetResourceTypeFullSizeVideo = 6,
    PHAssetResourceTypeAdjustmentData = 7,
};

// One file of an asset.
struct PHAssetResource {
    long type = 0; // a PHAssetResourceType, or a value added later
    std::optional<std::string> originalFilename;
    std::optional<std::string> uniformTypeIdentifier;
    Object object;
};

// The files of an asset in the library's own order. Makes no query of its own for an asset that
// came from a fetch.
std::vector<PHAssetResource> assetResourcesForAsset(const PHAsset& asset);

struct NSSortDescriptor {
    std::string key;
    bool ascending = true;
};

// A condition, by its format and the text bound to its "%@".
struct NSPredicate {
    std::string format;
    std::string argument;
};

// The one condition that is asked for.
inline constexpr std::string_view localIdentifierPredicateFormat = "localIdentifier == %@";

inline NSPredicate predicateWithFormat(std::string_view format, std::string argument) {
    return NSPredicate{std::string(format), std::move(argument)};
}

struct PHFetchOptions {
    std::vector<NSSortDescriptor> sortDescriptors; // empty: the library's own order
    std::optional<NSPredicate> predicate;
};

// What a fetch found: a snapshot of the library at the moment of the fetch, unless the fetch says
// otherwise. Counting costs nothing more, and walking forwards from any index costs the records
// walked, not those before them. Copies share one snapshot; use a result from one thread at a time,
// and keep it no longer than a call, because the library holds what the snapshot needs until the
// last copy is gone.
template <class Record>
class PHFetchResult {
public:
    std::size_t count() const;
    // The record at `index`; nothing when the library has no object there.
    std::optional<Record> objectAtIndex(std::size_t index) const;

    std::shared_ptr<void> object;
};

template <>
std::size_t PHFetchResult<PHAsset>::count() const;
template <>
std::optional<PHAsset> PHFetchResult<PHAsset>::objectAtIndex(std::size_t index) const;

// All assets of the library but those that its defaults leave out (hidden ones). Empty when
// there is no access or no library.
PHFetchResult<PHAsset> fetchAssetsWithOptions(const PHFetchOptions& options);

// The assets with these identifiers, each once however often it is named, hidden ones included;
// unknown identifiers are absent. The order is the library's.
PHFetchResult<PHAsset> fetchAssetsWithLocalIdentifiers(const std::vector<std::string>& identifiers);

} // namespace platform
