// Small pictures of assets. Every failure is a null result, and none is logged.
#include "bridge/arguments.h"
#include "bridge/call_scope.h"
#include "bridge/entry_points.h"
#include "platform/image_manager.h"

#include <memory>
#include <optional>
#include <utility>

namespace {

// The fastest picture that the library has, downloaded if it must be: the host draws many small
// ones. A picture larger than asked for is fine.
platform::PHImageRequestOptions thumbnailOptions() {
    platform::PHImageRequestOptions options;
    options.synchronous = true;
    options.deliveryMode = platform::PHImageRequestOptionsDeliveryModeFastFormat;
    options.resizeMode = platform::PHImageRequestOptionsResizeModeFast;
    options.networkAccessAllowed = true;
    options.version = platform::PHImageRequestOptionsVersionCurrent;
    return options;
}

std::optional<platform::NSData> jpegOfBitmap(platform::CGImage bitmap) {
    const platform::BitmapRepresentationProperties properties{.NSImageCompressionFactor = 0.85};
    return platform::representationUsingType(platform::initWithCGImage(std::move(bitmap)),
                                             platform::NSBitmapImageFileTypeJPEG, properties);
}

// The last delivery that has a bitmap decides, also when it cannot be encoded: then there is no
// thumbnail, whatever came before.
std::optional<platform::NSData> jpegOfAsset(const platform::PHAsset& asset,
                                            platform::CGSize targetSize) {
    // Shared with the handler, which the library may keep for longer than this call.
    const auto jpeg = std::make_shared<std::optional<platform::NSData>>();
    platform::requestImageForAsset(asset, targetSize, platform::PHImageContentModeAspectFill,
                                   thumbnailOptions(),
                                   [jpeg](const std::optional<platform::NSImage>& image) {
                                       if (!image)
                                           return;
                                       auto bitmap = platform::CGImageForProposedRect(*image);
                                       if (bitmap)
                                           *jpeg = jpegOfBitmap(std::move(*bitmap));
                                   });
    return std::move(*jpeg);
}

// Null, with the JVM's error left pending, when it has no room.
jbyteArray byteArrayResult(JNIEnv* env, const platform::NSData& data) {
    const auto length = static_cast<jsize>(data.size());
    const jbyteArray array = env->NewByteArray(length);
    if (array == nullptr)
        return nullptr;
    env->SetByteArrayRegion(array, 0, length, reinterpret_cast<const jbyte*>(data.data()));
    return array;
}

} // namespace

jbyteArray Java_com_morrowfen_lumatrice_service_PhotosService_nativeRequestThumbnail(
    JNIEnv* env, jobject, jstring assetId, jint width, jint height) noexcept {
    return inCallScope([&]() -> jbyteArray {
        const auto identifier = textOfString(env, assetId);
        if (!identifier)
            return nullptr;
        const auto assets = platform::fetchAssetsWithLocalIdentifiers({*identifier});
        if (assets.count() == 0)
            return nullptr;
        const auto asset = assets.objectAtIndex(0);
        if (!asset)
            return nullptr;
        const platform::CGSize targetSize{static_cast<double>(width), static_cast<double>(height)};
        const auto jpeg = jpegOfAsset(*asset, targetSize);
        return jpeg ? byteArrayResult(env, *jpeg) : nullptr;
    });
}
