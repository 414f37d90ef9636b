// Assets, collections, fetches and resources.
#import "tests/photokit/frameworks/stand_in.h"

#include <algorithm>

using namespace standin;

@implementation StandInObject
+ (instancetype)allocWithZone:(NSZone*)zone {
    countObject(1);
    return [super allocWithZone:zone];
}
- (instancetype)init {
    values = [[NSMutableDictionary alloc] init];
    return self;
}
- (void)dealloc {
    countObject(-1);
    [values release];
    [super dealloc];
}
@end

@implementation PHFetchOptions
- (void)setPredicate:(NSPredicate*)predicate {
    setValue(self, @"predicate", predicate);
}
- (void)setSortDescriptors:(NSArray*)descriptors {
    setValue(self, @"sort", descriptors);
}
@end

@implementation PHFetchResult
- (NSUInteger)count {
    return [[values objectForKey:@"objects"] count];
}
- (id)objectAtIndex:(NSUInteger)index {
    return [[values objectForKey:@"objects"] objectAtIndex:index];
}
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id*)buffer
                                    count:(NSUInteger)count {
    return [[values objectForKey:@"objects"] countByEnumeratingWithState:state
                                                                 objects:buffer
                                                                   count:count];
}
@end

namespace standin {

NSError* errorOf(const std::optional<Failure>& failure) {
    if (!failure)
        return nil;
    NSDictionary* const info = failure->sentence
                                   ? [NSDictionary dictionaryWithObject:text(*failure->sentence)
                                                                 forKey:NSLocalizedDescriptionKey]
                                   : nil;
    return [NSError errorWithDomain:text(failure->domain) code:failure->code userInfo:info];
}

std::string identifiers(id<NSFastEnumeration> objects) {
    std::string line;
    for (PHObject* object in objects)
        line += (line.empty() ? "" : ",") + plain([object localIdentifier]);
    return line;
}

std::string described(PHFetchOptions* options) {
    if (options == nil)
        return "nil";
    std::string line = "new";
    for (NSSortDescriptor* descriptor in [options->values objectForKey:@"sort"])
        line += ", by " + plain([descriptor key]) + " ascending " + yesOrNo([descriptor ascending]);
    if (NSPredicate* const predicate = [options->values objectForKey:@"predicate"])
        line += ", where " + plain([predicate predicateFormat]);
    return line;
}

PHAsset* newAsset(const Asset& asset) {
    PHAsset* const object = [[PHAsset alloc] init];
    setValue(object, @"id", text(asset.id));
    setValue(object, @"media", [NSNumber numberWithLong:asset.mediaType]);
    setValue(object, @"width", [NSNumber numberWithUnsignedLong:asset.width]);
    setValue(object, @"height", [NSNumber numberWithUnsignedLong:asset.height]);
    if (asset.created)
        setValue(object, @"created", [NSDate dateWithTimeIntervalSince1970:*asset.created]);
    setValue(object, @"favorite", [NSNumber numberWithBool:asset.favorite]);
    setValue(object, @"hidden", [NSNumber numberWithBool:asset.hidden]);
    return object;
}

PHCollection* newCollection(const Collection& collection) {
    const Class kind = collection.type == 0 ? [PHCollectionList class] : [PHAssetCollection class];
    PHCollection* const object = [[kind alloc] init];
    setValue(object, @"id", text(collection.id));
    setValue(object, @"title", text(collection.title));
    setValue(object, @"type", [NSNumber numberWithLong:collection.type]);
    return object;
}

// GNUstep's own sorting raises for what has no value; here that comes before all others.
static NSArray* sorted(NSArray* objects, NSSortDescriptor* descriptor) {
    const std::size_t count = [objects count];
    std::vector<id> order(count);
    [objects getObjects:order.data()];
    std::stable_sort(order.begin(), order.end(), [&](id one, id other) {
        const id first = [([descriptor ascending] ? one : other) valueForKey:[descriptor key]];
        const id second = [([descriptor ascending] ? other : one) valueForKey:[descriptor key]];
        return second != nil && (first == nil || [first compare:second] == NSOrderedAscending);
    });
    return [NSArray arrayWithObjects:order.data() count:count];
}

PHFetchResult* result(NSMutableArray* objects, PHFetchOptions* options) {
    NSArray* found = objects;
    NSDictionary* const wanted = options == nil ? nil : options->values;
    if (NSPredicate* const predicate = [wanted objectForKey:@"predicate"])
        found = [found filteredArrayUsingPredicate:predicate];
    for (NSSortDescriptor* descriptor in [wanted objectForKey:@"sort"])
        found = sorted(found, descriptor);
    PHFetchResult* const result = [[[PHFetchResult alloc] init] autorelease];
    setValue(result, @"objects", [[found copy] autorelease]);
    return result;
}

} // namespace standin

// The scripted objects that the test picks.
template <class Wanted>
static NSMutableArray* assetsThat(Wanted wanted) {
    const std::lock_guard lock(mutex());
    NSMutableArray* const objects = [NSMutableArray array];
    for (const Asset& asset : script().assets) {
        if (wanted(asset))
            [objects addObject:[newAsset(asset) autorelease]];
    }
    return objects;
}

template <class Wanted>
static NSMutableArray* collectionsThat(Wanted wanted) {
    const std::lock_guard lock(mutex());
    NSMutableArray* const objects = [NSMutableArray array];
    for (const Collection& collection : script().collections) {
        if (wanted(collection))
            [objects addObject:[newCollection(collection) autorelease]];
    }
    return objects;
}

static std::set<std::string> setOf(NSArray* texts) {
    std::set<std::string> set;
    for (NSString* text in texts)
        set.insert(plain(text));
    return set;
}

static std::string joined(NSArray* texts) {
    return plain([texts componentsJoinedByString:@","]);
}

@implementation PHObject
- (NSString*)localIdentifier {
    return [values objectForKey:@"id"];
}
@end

@implementation PHObjectPlaceholder
@end

@implementation PHAsset
+ (PHFetchResult*)fetchAssetsWithOptions:(PHFetchOptions*)options {
    note("fetch assets, options " + described(options));
    return result(assetsThat([](const Asset&) { return true; }), options);
}
+ (PHFetchResult*)fetchAssetsWithLocalIdentifiers:(NSArray*)identifiers
                                          options:(PHFetchOptions*)options {
    note("fetch assets " + joined(identifiers) + ", options " + described(options));
    const auto ids = setOf(identifiers);
    return result(assetsThat([&](const Asset& asset) { return ids.contains(asset.id); }), options);
}
+ (PHFetchResult*)fetchAssetsInAssetCollection:(PHAssetCollection*)collection
                                       options:(PHFetchOptions*)options {
    const std::string id = plain([collection localIdentifier]);
    note("fetch assets in " + id + ", options " + described(options));
    return result(assetsThat([&](const Asset& asset) {
                      const Collection* const album = script().collection(id);
                      return album &&
                             std::count(album->assets.begin(), album->assets.end(), asset.id) != 0;
                  }),
                  options);
}
- (PHAssetMediaType)mediaType {
    return static_cast<PHAssetMediaType>([[values objectForKey:@"media"] longValue]);
}
- (NSUInteger)pixelWidth {
    return [[values objectForKey:@"width"] unsignedLongValue];
}
- (NSUInteger)pixelHeight {
    return [[values objectForKey:@"height"] unsignedLongValue];
}
- (NSDate*)creationDate {
    return [values objectForKey:@"created"];
}
- (BOOL)isFavorite {
    return [[values objectForKey:@"favorite"] boolValue];
}
- (BOOL)isHidden {
    return [[values objectForKey:@"hidden"] boolValue];
}
- (PHContentEditingInputRequestID)
    requestContentEditingInputWithOptions:(PHContentEditingInputRequestOptions*)options
                        completionHandler:
                            (void (^)(PHContentEditingInput* input, NSDictionary* info))handler {
    note("request editing input of " + plain([self localIdentifier]));
    void (^kept)(PHContentEditingInput*, NSDictionary*) = Block_copy(handler);
    [options retain];
    answer([kept, options] {
        if (const auto& earlier = script().earlierEdit) {
            NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
            PHAdjustmentData* const data =
                [[PHAdjustmentData alloc] initWithFormatIdentifier:text(*earlier)
                                                     formatVersion:@"7"
                                                              data:[NSData data]];
            [pool drain];
            const BOOL taken = options->canHandle != nil && options->canHandle(data);
            note("edit of " + *earlier + (taken ? " can be taken up" : " is foreign"));
            [data release];
        }
        PHContentEditingInput* input = nil;
        if (script().givesEditingInput) {
            input = [[PHContentEditingInput alloc] init];
            NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
            if (const auto& path = script().editingImage)
                setValue(input, @"url", [NSURL fileURLWithPath:text(*path)]);
            [pool drain];
        }
        kept(input, nil);
        [input release];
        [options release];
        Block_release(kept);
    });
    return 1;
}
@end

@implementation PHCollection
+ (PHFetchResult*)fetchCollectionsInCollectionList:(PHCollectionList*)list
                                           options:(PHFetchOptions*)options {
    const std::string id = plain([list localIdentifier]);
    note("fetch collections in " + id + ", options " + described(options));
    return result(collectionsThat([&](const Collection& one) { return one.parent == id; }),
                  options);
}
+ (PHFetchResult*)fetchTopLevelUserCollectionsWithOptions:(PHFetchOptions*)options {
    note("fetch top level, options " + described(options));
    return result(
        collectionsThat([](const Collection& one) { return one.parent.empty() && one.type != 2; }),
        options);
}
- (NSString*)localizedTitle {
    return [values objectForKey:@"title"];
}
@end

@implementation PHAssetCollection
+ (PHFetchResult*)fetchAssetCollectionsWithLocalIdentifiers:(NSArray*)identifiers
                                                    options:(PHFetchOptions*)options {
    note("fetch albums " + joined(identifiers) + ", options " + described(options));
    const auto ids = setOf(identifiers);
    return result(collectionsThat(
                      [&](const Collection& one) { return one.type != 0 && ids.contains(one.id); }),
                  options);
}
+ (PHFetchResult*)fetchAssetCollectionsWithType:(PHAssetCollectionType)type
                                        subtype:(PHAssetCollectionSubtype)subtype
                                        options:(PHFetchOptions*)options {
    note("fetch albums of type " + std::to_string(type) + " subtype " + std::to_string(subtype) +
         ", options " + described(options));
    return result(collectionsThat([&](const Collection& one) { return one.type == type; }),
                  options);
}
+ (PHFetchResult*)fetchAssetCollectionsContainingAsset:(PHAsset*)asset
                                              withType:(PHAssetCollectionType)type
                                               options:(PHFetchOptions*)options {
    const std::string id = plain([asset localIdentifier]);
    note("fetch albums of type " + std::to_string(type) + " with " + id + ", options " +
         described(options));
    return result(collectionsThat([&](const Collection& one) {
                      return one.type == type &&
                             std::count(one.assets.begin(), one.assets.end(), id) != 0;
                  }),
                  options);
}
- (PHAssetCollectionType)assetCollectionType {
    return static_cast<PHAssetCollectionType>([[values objectForKey:@"type"] longValue]);
}
@end

@implementation PHCollectionList
+ (PHFetchResult*)fetchCollectionListsWithLocalIdentifiers:(NSArray*)identifiers
                                                   options:(PHFetchOptions*)options {
    note("fetch folders " + joined(identifiers) + ", options " + described(options));
    const auto ids = setOf(identifiers);
    return result(collectionsThat(
                      [&](const Collection& one) { return one.type == 0 && ids.contains(one.id); }),
                  options);
}
+ (PHFetchResult*)fetchCollectionListsContainingCollection:(PHCollection*)collection
                                                   options:(PHFetchOptions*)options {
    const std::string id = plain([collection localIdentifier]);
    note("fetch folders with " + id + ", options " + described(options));
    return result(collectionsThat([&](const Collection& one) {
                      const Collection* const child = script().collection(id);
                      return one.type == 0 && child && child->parent == one.id;
                  }),
                  options);
}
@end

// ---- Resources, by their number in the script ----

static const Resource& resourceBehind(PHAssetResource* resource) {
    return script()
        .asset(plain(static_cast<NSString*>([resource->values objectForKey:@"asset"])))
        .resources[[[resource->values objectForKey:@"index"] unsignedLongValue]];
}

@implementation PHAssetResource
+ (NSArray*)assetResourcesForAsset:(PHAsset*)asset {
    NSString* const id = [asset localIdentifier];
    NSMutableArray* const resources = [NSMutableArray array];
    const std::lock_guard lock(mutex());
    for (NSUInteger index = 0; index < script().asset(plain(id)).resources.size(); ++index) {
        PHAssetResource* const resource = [[[PHAssetResource alloc] init] autorelease];
        setValue(resource, @"asset", id);
        setValue(resource, @"index", [NSNumber numberWithUnsignedLong:index]);
        [resources addObject:resource];
    }
    return resources;
}
- (PHAssetResourceType)type {
    return static_cast<PHAssetResourceType>(resourceBehind(self).type);
}
- (NSString*)originalFilename {
    return text(resourceBehind(self).name);
}
- (NSString*)uniformTypeIdentifier {
    return text(resourceBehind(self).uti);
}
@end

@implementation PHAssetResourceRequestOptions
- (void)setNetworkAccessAllowed:(BOOL)allowed {
    note("data request: network " + yesOrNo(allowed));
}
@end

static void handOver(const Resource& resource, int request, void (^received)(NSData*),
                     void (^completed)(NSError*)) {
    for (const std::string& chunk : resource.chunks) {
        NSData* const data = [[NSData alloc] initWithBytes:chunk.data() length:chunk.size()];
        received(data);
        [data release];
    }
    if (resource.runsUntilCancelled)
        waitForCancellation(request);
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    NSError* const error = [(resource.runsUntilCancelled ? errorOf(Failure{.code = 3072})
                                                         : errorOf(resource.failure)) retain];
    [pool drain];
    completed(error);
    [error release];
}

@implementation PHAssetResourceManager
+ (PHAssetResourceManager*)defaultManager {
    static PHAssetResourceManager* const manager = [[self alloc] init];
    return manager;
}
- (PHAssetResourceDataRequestID)requestDataForAssetResource:(PHAssetResource*)resource
                                                    options:(PHAssetResourceRequestOptions*)options
                                        dataReceivedHandler:(void (^)(NSData* data))received
                                          completionHandler:(void (^)(NSError* error))completed {
    static std::atomic<int> next = 7001;
    const int request = next++;
    note("request data of resource " + std::to_string([resource type]));
    void (^keptReceived)(NSData*) = Block_copy(received);
    void (^keptCompleted)(NSError*) = Block_copy(completed);
    const Resource scripted = resourceBehind(resource);
    answer([=] {
        handOver(scripted, request, keptReceived, keptCompleted);
        Block_release(keptReceived);
        Block_release(keptCompleted);
    });
    return request;
}
- (void)cancelDataRequest:(PHAssetResourceDataRequestID)request {
    note("cancel data request");
    cancel(request);
}
@end
