// Pictures. An image, its bitmap and the representation all carry the delivery they came from.
#include "tests/double/scripted_library.h"

#include <cstdio>

namespace platform {

using scripted::ImageDelivery;
using scripted::library;

namespace {

const ImageDelivery& deliveryBehind(const Object& object) {
    return *static_cast<const ImageDelivery*>(object.get());
}

std::string shortDecimal(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", number);
    return text;
}

} // namespace

void requestImageForAsset(const PHAsset& asset, CGSize targetSize, long contentMode,
                          const PHImageRequestOptions& options,
                          const std::function<void(const std::optional<NSImage>&)>& resultHandler) {
    auto& script = library();
    script.note("request image of " + asset.localIdentifier + ", " +
                shortDecimal(targetSize.width) + " x " + shortDecimal(targetSize.height) +
                ", content mode " + std::to_string(contentMode));
    script.note(std::string(options.synchronous ? "synchronous" : "asynchronous") +
                ", delivery mode " + std::to_string(options.deliveryMode) + ", resize mode " +
                std::to_string(options.resizeMode) +
                (options.networkAccessAllowed ? ", network" : ", no network") + ", version " +
                std::to_string(options.version));
    script.imageHandler = resultHandler;
    const auto deliverAll = [&] {
        for (const ImageDelivery& delivery : script.imageDeliveries) {
            if (delivery.hasImage)
                resultHandler(NSImage{std::make_shared<ImageDelivery>(delivery)});
            else
                resultHandler(std::nullopt);
        }
    };
    if (script.imagesFromAnotherThread)
        std::thread(deliverAll).join();
    else
        deliverAll();
}

std::optional<CGImage> CGImageForProposedRect(const NSImage& image) {
    if (!deliveryBehind(image.object).hasBitmap)
        return std::nullopt;
    return CGImage{image.object};
}

std::optional<NSData> representationUsingType(const NSBitmapImageRep& representation, long fileType,
                                              const BitmapRepresentationProperties& properties) {
    library().note("encode, type " + std::to_string(fileType) + ", factor " +
                   shortDecimal(properties.NSImageCompressionFactor));
    const auto& encoded = deliveryBehind(representation.image.object).encoded;
    if (!encoded)
        return std::nullopt;
    return NSData(encoded->begin(), encoded->end());
}

} // namespace platform
