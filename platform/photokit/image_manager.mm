#include "platform/image_manager.h"

#import <AppKit/AppKit.h>

#include "platform/photokit/objects.h"

namespace platform {
static ::PHImageRequestOptions* nativeOptions(const PHImageRequestOptions& options) {
    ::PHImageRequestOptions* const result = [[[::PHImageRequestOptions alloc] init] autorelease];
    [result setSynchronous:options.synchronous];
    [result setDeliveryMode:static_cast<::PHImageRequestOptionsDeliveryMode>(options.deliveryMode)];
    [result setResizeMode:static_cast<::PHImageRequestOptionsResizeMode>(options.resizeMode)];
    [result setNetworkAccessAllowed:options.networkAccessAllowed];
    [result setVersion:static_cast<::PHImageRequestOptionsVersion>(options.version)];
    return result;
}

static CGImageRef bitmapBehind(const void* object) {
    return static_cast<CGImageRef>(const_cast<void*>(object));
}

void requestImageForAsset(const PHAsset& asset, CGSize targetSize, long contentMode,
                          const PHImageRequestOptions& options,
                          const std::function<void(const std::optional<NSImage>&)>& resultHandler) {
    const std::function handler = resultHandler; // a block would capture only a reference
    [[::PHImageManager defaultManager]
        requestImageForAsset:native(asset)
                  targetSize:NSMakeSize(targetSize.width, targetSize.height)
                 contentMode:static_cast<::PHImageContentMode>(contentMode)
                     options:nativeOptions(options)
               resultHandler:^(::NSImage* image, NSDictionary*) {
                 @autoreleasepool {
                     handler(image == nil ? std::nullopt : std::optional(NSImage{retained(image)}));
                 }
               }];
}

std::optional<CGImage> CGImageForProposedRect(const NSImage& image) {
    ::NSImage* const object = static_cast<id>(const_cast<void*>(image.object.get()));
    const CGImageRef bitmap = [object CGImageForProposedRect:nullptr context:nil hints:nil];
    if (bitmap == nullptr)
        return std::nullopt;
    return CGImage{Object(static_cast<const void*>(CGImageRetain(bitmap)),
                          [](const void* held) { CGImageRelease(bitmapBehind(held)); })};
}

std::optional<NSData> representationUsingType(const NSBitmapImageRep& representation, long fileType,
                                              const BitmapRepresentationProperties& properties) {
    ::NSBitmapImageRep* const bitmap = [[[::NSBitmapImageRep alloc]
        initWithCGImage:bitmapBehind(representation.image.object.get())] autorelease];
    NSNumber* const factor = [NSNumber numberWithDouble:properties.NSImageCompressionFactor];
    ::NSData* const data = [bitmap
        representationUsingType:static_cast<::NSBitmapImageFileType>(fileType)
                     properties:[NSDictionary dictionaryWithObject:factor
                                                            forKey:NSImageCompressionFactor]];
    return data == nil ? std::nullopt : std::optional(copyOf(data));
}
} // namespace platform
