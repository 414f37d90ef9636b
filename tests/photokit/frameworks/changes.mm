// The library, its transactions and the change requests.
#import "tests/photokit/frameworks/stand_in.h"

using namespace standin;

// Without a sentence of its own, an error has none; and its code has all its bits.
@interface StandInError : NSError {
@public
    NSInteger wholeCode;
}
@end

@implementation StandInError
- (NSInteger)code {
    return wholeCode;
}
- (NSString*)localizedDescription {
    return [[self userInfo] objectForKey:NSLocalizedDescriptionKey];
}
@end

namespace standin {

NSError* errorOf(const std::optional<backing::NSError>& error) {
    if (!error)
        return nil;
    NSMutableDictionary* const info = [NSMutableDictionary dictionary];
    if (error->localizedDescription)
        [info setObject:text(*error->localizedDescription) forKey:NSLocalizedDescriptionKey];
    StandInError* const object = [StandInError errorWithDomain:text(error->domain)
                                                          code:0
                                                      userInfo:info];
    object->wholeCode = error->code;
    return object;
}

} // namespace standin

// The host's scopes: in the order of what happens inside them, pools included.
struct Scope {
    NSAutoreleasePool* pool;
    void* noted;
};

extern "C" void* objc_autoreleasePoolPush(void) {
    void* const noted = backing::objc_autoreleasePoolPush();
    return new Scope{[[NSAutoreleasePool alloc] init], noted};
}

extern "C" void objc_autoreleasePoolPop(void* pool) {
    const std::unique_ptr<Scope> scope(static_cast<Scope*>(pool));
    [scope->pool drain];
    backing::objc_autoreleasePoolPop(scope->noted);
}

@implementation PHPhotoLibrary
+ (PHPhotoLibrary*)sharedPhotoLibrary {
    static PHPhotoLibrary* const library = [[self alloc] init];
    return library;
}
+ (PHAuthorizationStatus)authorizationStatusForAccessLevel:(PHAccessLevel)level {
    return static_cast<PHAuthorizationStatus>(backing::authorizationStatusForAccessLevel(level));
}
+ (void)requestAuthorizationForAccessLevel:(PHAccessLevel)level
                                   handler:(void (^)(PHAuthorizationStatus status))handler {
    backing::requestAuthorizationForAccessLevel(level, [kept = Kept(handler)](long status) {
        kept.get()(static_cast<PHAuthorizationStatus>(status));
    });
}
- (BOOL)performChangesAndWait:(void (^)(void))changes error:(NSError**)error {
    std::optional<backing::NSError> failure;
    const bool done = backing::performChangesAndWait(
        [kept = Kept(changes)] {
            NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
            kept.get()();
            [pool drain];
        },
        failure);
    *error = errorOf(failure);
    return done;
}
@end

@implementation PHAssetChangeRequest
+ (instancetype)changeRequestForAsset:(PHAsset*)asset {
    return objectOf([PHAssetChangeRequest class],
                    backing::changeRequestForAsset(behind<backing::PHAsset>(asset)));
}
+ (void)deleteAssets:(id<NSFastEnumeration>)assets {
    backing::deleteAssets(fetchBehind<backing::PHAsset>(assets));
}
- (PHObjectPlaceholder*)placeholderForCreatedAsset {
    return objectOf(
        [PHObjectPlaceholder class],
        backing::placeholderForCreatedAsset(behind<backing::PHAssetCreationRequest>(self)));
}
- (void)setFavorite:(BOOL)favorite {
    backing::setFavorite(behind<backing::PHAssetChangeRequest>(self), favorite);
}
- (void)setHidden:(BOOL)hidden {
    backing::setHidden(behind<backing::PHAssetChangeRequest>(self), hidden);
}
- (void)setContentEditingOutput:(PHContentEditingOutput*)output {
    backing::setContentEditingOutput(behind<backing::PHAssetChangeRequest>(self),
                                     behind<backing::PHContentEditingOutput>(output));
}
@end

@implementation PHAssetResourceCreationOptions
TAKES(ShouldMoveFile, BOOL, PHAssetResourceCreationOptions, shouldMoveFile)
- (void)setOriginalFilename:(NSString*)name {
    behind<backing::PHAssetResourceCreationOptions>(self).originalFilename = optional(name);
}
@end

@implementation PHAssetCreationRequest
+ (instancetype)creationRequestForAsset {
    return objectOf([PHAssetCreationRequest class], backing::creationRequestForAsset());
}
- (void)addResourceWithType:(PHAssetResourceType)type
                    fileURL:(NSURL*)url
                    options:(PHAssetResourceCreationOptions*)options {
    backing::addResourceWithType(behind<backing::PHAssetCreationRequest>(self), type, urlOf(url),
                                 behind<backing::PHAssetResourceCreationOptions>(options));
}
@end

// What albums and folders have in common.
#define CHANGES_OF(Kind)                                                                           \
    +(instancetype)creationRequestFor##Kind##WithTitle : (NSString*)title {                        \
        return objectOf(self, backing::creationRequestFor##Kind##WithTitle(plain(title)));         \
    }                                                                                              \
    +(instancetype)changeRequestFor##Kind : (PH##Kind*)collection {                                \
        return objectOf(self,                                                                      \
                        backing::changeRequestFor##Kind(behind<backing::PH##Kind>(collection)));   \
    }                                                                                              \
    +(void)delete##Kind##s : (id<NSFastEnumeration>)collections {                                  \
        backing::delete##Kind##s(fetchBehind<backing::PH##Kind>(collections));                     \
    }                                                                                              \
    -(PHObjectPlaceholder*)placeholderForCreated##Kind {                                           \
        const auto& request = behind<backing::PH##Kind##ChangeRequest>(self);                      \
        return objectOf([PHObjectPlaceholder class],                                               \
                        backing::placeholderForCreated##Kind(request));                            \
    }                                                                                              \
    -(void)setTitle : (NSString*)title {                                                           \
        backing::setTitle(behind<backing::PH##Kind##ChangeRequest>(self), plain(title));           \
    }

@implementation PHAssetCollectionChangeRequest
CHANGES_OF(AssetCollection)
- (void)addAssets:(id<NSFastEnumeration>)assets {
    const auto& request = behind<backing::PHAssetCollectionChangeRequest>(self);
    if ([static_cast<id>(assets) isKindOfClass:[PHFetchResult class]])
        return backing::addAssets(request, fetchBehind<backing::PHAsset>(assets));
    std::vector<backing::PHAsset> records;
    for (PHAsset* asset in assets)
        records.push_back(behind<backing::PHAsset>(asset));
    backing::addAssets(request, records);
}
- (void)removeAssets:(id<NSFastEnumeration>)assets {
    backing::removeAssets(behind<backing::PHAssetCollectionChangeRequest>(self),
                          fetchBehind<backing::PHAsset>(assets));
}
@end

@implementation PHCollectionListChangeRequest
CHANGES_OF(CollectionList)
- (void)addChildCollections:(id<NSFastEnumeration>)collections {
    std::vector<backing::PHCollection> children;
    for (PHCollection* collection in collections)
        children.push_back(collectionBehind(collection));
    backing::addChildCollections(behind<backing::PHCollectionListChangeRequest>(self), children);
}
@end
