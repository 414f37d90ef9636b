// Pictures, and what is handed out for editing.
#import "tests/photokit/frameworks/stand_in.h"

#include <atomic>

using namespace standin;

struct CGImage {
    backing::CGImage bitmap;
    std::atomic<int> references = 1;
};

CGImageRef CGImageRetain(CGImageRef image) {
    ++image->references;
    return image;
}

void CGImageRelease(CGImageRef image) {
    if (--image->references != 0)
        return;
    countObject(-1);
    delete image;
}

NSString* const NSImageCompressionFactor = @"NSImageCompressionFactor";

// The bitmap belongs to its image, which the stand-in makes with it.
struct Image {
    std::shared_ptr<CGImage> bitmap;
};

static Image imageOf(const backing::NSImage& image) {
    const auto bitmap = backing::CGImageForProposedRect(image);
    if (!bitmap)
        return {};
    countObject(1);
    return {std::shared_ptr<CGImage>(new CGImage{*bitmap}, CGImageRelease)};
}

@implementation NSImage
- (CGImageRef)CGImageForProposedRect:(NSRect*)rect
                             context:(NSGraphicsContext*)context
                               hints:(NSDictionary*)hints {
    if (rect != nullptr || context != nil || hints != nil)
        scripted::library().note("bitmap of another size");
    return behind<Image>(self).bitmap.get();
}
@end

@implementation NSBitmapImageRep
- (instancetype)initWithCGImage:(CGImageRef)image {
    behind<Image>(self).bitmap = {CGImageRetain(image), CGImageRelease};
    return self;
}
- (NSData*)representationUsingType:(NSBitmapImageFileType)type
                        properties:(NSDictionary*)properties {
    const auto encoded = backing::representationUsingType(
        backing::initWithCGImage(behind<Image>(self).bitmap->bitmap), static_cast<long>(type),
        {[[properties objectForKey:NSImageCompressionFactor] doubleValue]});
    return encoded ? dataOf(*encoded) : nil;
}
@end

@implementation PHImageRequestOptions
TAKES(Synchronous, BOOL, PHImageRequestOptions, synchronous)
TAKES(DeliveryMode, PHImageRequestOptionsDeliveryMode, PHImageRequestOptions, deliveryMode)
TAKES(ResizeMode, PHImageRequestOptionsResizeMode, PHImageRequestOptions, resizeMode)
TAKES(NetworkAccessAllowed, BOOL, PHImageRequestOptions, networkAccessAllowed)
TAKES(Version, PHImageRequestOptionsVersion, PHImageRequestOptions, version)
@end

@implementation PHImageManager
+ (PHImageManager*)defaultManager {
    static PHImageManager* const manager = [[self alloc] init];
    return manager;
}
- (PHImageRequestID)requestImageForAsset:(PHAsset*)asset
                              targetSize:(NSSize)size
                             contentMode:(PHImageContentMode)mode
                                 options:(PHImageRequestOptions*)options
                           resultHandler:(void (^)(NSImage* image, NSDictionary* info))handler {
    backing::requestImageForAsset(
        behind<backing::PHAsset>(asset), {size.width, size.height}, mode,
        behind<backing::PHImageRequestOptions>(options),
        [kept = Kept(handler)](const std::optional<backing::NSImage>& image) {
            handOver(
                [&]() -> id { return image ? objectOf([NSImage class], imageOf(*image)) : nil; },
                [&](id object) { kept.get()(object, nil); });
        });
    return 1;
}
@end

// ---- Editing ----

@implementation PHAdjustmentData
- (instancetype)initWithFormatIdentifier:(NSString*)identifier
                           formatVersion:(NSString*)version
                                    data:(NSData*)data {
    behind<backing::PHAdjustmentData>(self) = {plain(identifier), plain(version), bytesOf(data)};
    return self;
}
READS_TEXT(formatIdentifier, PHAdjustmentData)
READS_TEXT(formatVersion, PHAdjustmentData)
- (NSData*)data {
    return dataOf(behind<backing::PHAdjustmentData>(self).data);
}
@end

@implementation PHContentEditingInputRequestOptions
TAKES(NetworkAccessAllowed, BOOL, PHContentEditingInputRequestOptions, networkAccessAllowed)
- (void)setCanHandleAdjustmentData:(BOOL (^)(PHAdjustmentData* data))test {
    behind<backing::PHContentEditingInputRequestOptions>(self).canHandleAdjustmentData =
        [kept = Kept(test)](const backing::PHAdjustmentData& data) {
            bool can = false;
            handOver([&] { return objectOf([PHAdjustmentData class], data); },
                     [&](id object) { can = kept.get()(object); });
            return can;
        };
}
@end

@implementation PHContentEditingInput
- (NSURL*)fullSizeImageURL {
    const auto& url = behind<backing::PHContentEditingInput>(self).fullSizeImageURL;
    return url ? [NSURL fileURLWithPath:text(url->path)] : nil;
}
@end

@implementation PHContentEditingOutput
- (instancetype)initWithContentEditingInput:(PHContentEditingInput*)input {
    behind<backing::PHContentEditingOutput>(self) =
        backing::initWithContentEditingInput(behind<backing::PHContentEditingInput>(input));
    return self;
}
- (NSURL*)renderedContentURL {
    return [NSURL
        fileURLWithPath:text(
                            behind<backing::PHContentEditingOutput>(self).renderedContentURL.path)];
}
- (void)setAdjustmentData:(PHAdjustmentData*)data {
    backing::setAdjustmentData(behind<backing::PHContentEditingOutput>(self),
                               behind<backing::PHAdjustmentData>(data));
}
@end
