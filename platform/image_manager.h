// Pictures of assets, and their encoding as JPEG.
#pragma once

#include "platform/asset.h"

#include <functional>

namespace platform {

enum PHImageContentMode : long {
    PHImageContentModeAspectFit = 0,
    PHImageContentModeAspectFill = 1,
};

enum PHImageRequestOptionsDeliveryMode : long {
    PHImageRequestOptionsDeliveryModeOpportunistic = 0,
    PHImageRequestOptionsDeliveryModeHighQualityFormat = 1,
    PHImageRequestOptionsDeliveryModeFastFormat = 2,
};

enum PHImageRequestOptionsResizeMode : long {
    PHImageRequestOptionsResizeModeNone = 0,
    PHImageRequestOptionsResizeModeFast = 1,
    PHImageRequestOptionsResizeModeExact = 2,
};

enum PHImageRequestOptionsVersion : long {
    PHImageRequestOptionsVersionCurrent = 0, // edits included
    PHImageRequestOptionsVersionUnadjusted = 1,
    PHImageRequestOptionsVersionOriginal = 2,
};

// Back ends hand the options on in the order of these members.
struct PHImageRequestOptions {
    bool synchronous = false;
    long deliveryMode = PHImageRequestOptionsDeliveryModeOpportunistic;
    long resizeMode = PHImageRequestOptionsResizeModeFast;
    bool networkAccessAllowed = false;
    long version = PHImageRequestOptionsVersionCurrent;
};

// Pixels; they may be larger or smaller than what was asked for.
struct CGSize {
    double width = 0;
    double height = 0;
};

struct NSImage {
    Object object;
};

struct CGImage {
    Object object;
};

// Asks for the asset's picture. With `synchronous` every call of the handler has happened when
// this returns, and the wait has no limit. The handler gets nothing where no picture could be
// had, and may be called more than once.
void requestImageForAsset(const PHAsset& asset, CGSize targetSize, long contentMode,
                          const PHImageRequestOptions& options,
                          const std::function<void(const std::optional<NSImage>&)>& resultHandler);

// The image's bitmap at its own size, or nothing.
std::optional<CGImage> CGImageForProposedRect(const NSImage& image);

enum NSBitmapImageFileType : long {
    NSBitmapImageFileTypeJPEG = 3,
};

struct NSBitmapImageRep {
    CGImage image;
};

inline NSBitmapImageRep initWithCGImage(CGImage image) {
    return NSBitmapImageRep{std::move(image)};
}

struct BitmapRepresentationProperties {
    double NSImageCompressionFactor = 0; // 0 most compression to 1 best quality
};

// The bitmap as a complete file of the type, or nothing when it cannot be encoded.
std::optional<NSData> representationUsingType(const NSBitmapImageRep& representation, long fileType,
                                              const BitmapRepresentationProperties& properties);

} // namespace platform
