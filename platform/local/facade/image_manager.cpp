// Pictures of assets, made by the imaging process.
#include "platform/image_manager.h"

#include "platform/local/library/picture_source.h"

#include <algorithm>
#include <cmath>
#include <exception>

namespace platform {

namespace {

std::optional<local::Pixels> pixelsOfAsset(const PHAsset& asset, CGSize size) {
    const auto source = local::pictureSourceForAsset(asset);
    if (!source)
        return std::nullopt;
    auto pixels = local::coverPicture(*source, size.width, size.height);
    if (pixels)
        return pixels;
    // Another edit may have taken this one's place before its file was opened.
    const auto now = local::pictureSourceForAsset(asset);
    if (!now || now->contentKey == source->contentKey)
        return std::nullopt;
    return local::coverPicture(*now, size.width, size.height);
}

std::optional<NSImage> imageOfAsset(const PHAsset& asset, CGSize targetSize) {
    try {
        auto pixels = pixelsOfAsset(asset, targetSize);
        if (!pixels)
            return std::nullopt;
        return NSImage{std::make_shared<const local::Pixels>(std::move(*pixels))};
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace

// Always synchronous, and always the picture that covers the target, whatever the content mode:
// that is never smaller than what was asked for.
void requestImageForAsset(const PHAsset& asset, CGSize targetSize, long /*contentMode*/,
                          const PHImageRequestOptions& /*options*/,
                          const std::function<void(const std::optional<NSImage>&)>& resultHandler) {
    resultHandler(imageOfAsset(asset, targetSize));
}

std::optional<CGImage> CGImageForProposedRect(const NSImage& image) {
    if (!image.object)
        return std::nullopt;
    return CGImage{image.object};
}

std::optional<NSData> representationUsingType(const NSBitmapImageRep& representation, long fileType,
                                              const BitmapRepresentationProperties& properties) {
    if (fileType != NSBitmapImageFileTypeJPEG || !representation.image.object)
        return std::nullopt;
    const double factor = properties.NSImageCompressionFactor;
    if (!(factor >= 0 && factor <= 1))
        return std::nullopt;
    const auto quality = std::max(1, static_cast<int>(std::lround(factor * 100)));
    return local::encodeJpeg(*static_cast<const local::Pixels*>(representation.image.object.get()),
                             quality);
}

} // namespace platform
