// Pictures, edits and content types.
#import "tests/photokit/frameworks/stand_in.h"

#import <UniformTypeIdentifiers/UniformTypeIdentifiers.h>

using namespace standin;

// A bitmap is what the encoder makes of it.
struct CGImage {
    std::optional<std::string> encoded;
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

@implementation NSImage
- (void)dealloc {
    countObject(-1);
    if (bitmap != nullptr)
        CGImageRelease(bitmap);
    [super dealloc];
}
- (CGImageRef)CGImageForProposedRect:(NSRect*)rect
                             context:(NSGraphicsContext*)context
                               hints:(NSDictionary*)hints {
    if (rect != nullptr || context != nil || hints != nil)
        note("bitmap of another size");
    return bitmap;
}
@end

@implementation NSBitmapImageRep
- (instancetype)initWithCGImage:(CGImageRef)image {
    countObject(1);
    bitmap = CGImageRetain(image);
    return self;
}
- (void)dealloc {
    countObject(-1);
    CGImageRelease(bitmap);
    [super dealloc];
}
- (NSData*)representationUsingType:(NSBitmapImageFileType)type
                        properties:(NSDictionary*)properties {
    note("encode as type " + std::to_string(type) + ", " + plain([properties description]));
    if (!bitmap->encoded)
        return nil;
    return [NSData dataWithBytes:bitmap->encoded->data() length:bitmap->encoded->size()];
}
@end

@implementation PHImageRequestOptions
- (void)setSynchronous:(BOOL)synchronous {
    note("image: synchronous " + yesOrNo(synchronous));
}
- (void)setDeliveryMode:(PHImageRequestOptionsDeliveryMode)mode {
    note("image: delivery mode " + std::to_string(mode));
}
- (void)setResizeMode:(PHImageRequestOptionsResizeMode)mode {
    note("image: resize mode " + std::to_string(mode));
}
- (void)setNetworkAccessAllowed:(BOOL)allowed {
    note("image: network " + yesOrNo(allowed));
}
- (void)setVersion:(PHImageRequestOptionsVersion)version {
    note("image: version " + std::to_string(version));
}
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
    note("request image of " + plain([asset localIdentifier]) + ", " +
         std::to_string(static_cast<long>(size.width)) + " x " +
         std::to_string(static_cast<long>(size.height)) + ", mode " + std::to_string(mode) +
         (options == nil ? ", no options" : ""));
    // The deliveries come from one thread, before the request returns.
    std::thread([&] {
        for (const Image& delivery : script().images) {
            NSImage* image = nil;
            if (delivery.exists) {
                countObject(1);
                image = [[NSImage alloc] init];
                if (delivery.hasBitmap) {
                    countObject(1);
                    image->bitmap = new CGImage{delivery.encoded};
                }
            }
            handler(image, nil);
            [image release];
        }
    }).join();
    return 1;
}
@end

@implementation PHAdjustmentData
- (instancetype)initWithFormatIdentifier:(NSString*)identifier
                           formatVersion:(NSString*)version
                                    data:(NSData*)data {
    self = [self init];
    setValue(self, @"format", identifier);
    setValue(self, @"version", version);
    setValue(self, @"data", data);
    return self;
}
- (NSString*)formatIdentifier {
    return [values objectForKey:@"format"];
}
- (NSString*)formatVersion {
    return [values objectForKey:@"version"];
}
- (NSData*)data {
    return [values objectForKey:@"data"];
}
@end

@implementation PHContentEditingInputRequestOptions
- (void)setNetworkAccessAllowed:(BOOL)allowed {
    note("editing: network " + yesOrNo(allowed));
}
- (void)setCanHandleAdjustmentData:(BOOL (^)(PHAdjustmentData* data))test {
    note("editing: test of adjustment data");
    canHandle = Block_copy(test);
}
- (void)dealloc {
    Block_release(canHandle);
    [super dealloc];
}
@end

@implementation PHContentEditingInput
- (NSURL*)fullSizeImageURL {
    return [values objectForKey:@"url"];
}
@end

@implementation PHContentEditingOutput
- (instancetype)initWithContentEditingInput:(PHContentEditingInput*)input {
    note(input == nil ? "make output of no input" : "make output");
    return [self init];
}
- (NSURL*)renderedContentURL {
    return [NSURL fileURLWithPath:text(script().renderedContent)];
}
- (void)setAdjustmentData:(PHAdjustmentData*)data {
    NSString* const bytes = [[[NSString alloc] initWithData:[data data]
                                                   encoding:NSUTF8StringEncoding] autorelease];
    note("set adjustment data " + plain([data formatIdentifier]) + " " +
         plain([data formatVersion]) + " '" + plain(bytes) + "'");
    setValue(self, @"data", data);
}
@end

// ---- Content types: a file's extension is its type's identifier ----

// A constant to others. Classes are loaded later than the constants of this file are made.
extern "C" UTType* g_movieType __asm__("UTTypeMovie");
UTType* g_movieType;

@implementation UTType
+ (void)load {
    g_movieType = [[self alloc] init];
    g_movieType->name = @"public.movie";
}
+ (instancetype)typeWithIdentifier:(NSString*)identifier {
    UTType* const type = [[[self alloc] init] autorelease];
    type->name = [identifier copy];
    return type;
}
- (void)dealloc {
    [name release];
    [super dealloc];
}
- (NSString*)identifier {
    return name;
}
- (BOOL)conformsToType:(UTType*)type {
    note("does " + plain(name) + " conform to " + plain(type->name));
    return [type->name isEqual:@"public.movie"] && ([name isEqual:@"mov"] || [name isEqual:@"mp4"]);
}
@end

NSString* const NSURLContentTypeKey = @"NSURLContentTypeKey";

@implementation NSURL (ContentType)
- (NSDictionary*)resourceValuesForKeys:(NSArray*)keys error:(NSError**)error {
    if (error != nullptr)
        *error = nil;
    NSString* const extension = [[[self path] pathExtension] lowercaseString];
    if ([extension length] == 0 || ![keys containsObject:NSURLContentTypeKey])
        return [NSDictionary dictionary];
    return [NSDictionary dictionaryWithObject:[UTType typeWithIdentifier:extension]
                                       forKey:NSURLContentTypeKey];
}
@end
