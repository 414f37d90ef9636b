// Assets, collections, their resources, and fetches of them.
#import "tests/photokit/frameworks/stand_in.h"

#include <atomic>

using namespace standin;

static std::atomic<long> g_living = 0;

namespace standin {

long livingObjects() {
    return g_living;
}

void countObject(int change) {
    g_living += change;
}

} // namespace standin

@implementation StandInObject
+ (instancetype)allocWithZone:(NSZone*)zone {
    countObject(1);
    return [super allocWithZone:zone];
}
- (void)dealloc {
    countObject(-1);
    delete static_cast<std::any*>(value);
    [super dealloc];
}
@end

// ---- Fetches ----

namespace {

id objectFor(const backing::PHAsset& asset) {
    return objectOf([PHAsset class], asset);
}
id objectFor(const backing::PHAssetCollection& album) {
    return objectOf([PHAssetCollection class], album);
}
id objectFor(const backing::PHCollectionList& folder) {
    return objectOf([PHCollectionList class], folder);
}
id objectFor(const backing::PHCollection& collection) {
    return std::visit([](const auto& either) { return objectFor(either); }, collection);
}

// Where the facade passes no options, none are due.
template <class Record>
PHFetchResult* fetched(const backing::PHFetchResult<Record>& result, PHFetchOptions* undue = nil) {
    if (undue != nil)
        scripted::library().note("options that nobody asked for");
    return objectOf([PHFetchResult class], Fetched {
        result, [result] { return result.count(); }, [result](std::size_t index) -> id {
            const auto record = result.objectAtIndex(index);
            return record ? objectFor(*record) : nil;
        }
    });
}

std::vector<std::string> textsIn(NSArray* texts) {
    std::vector<std::string> found;
    for (NSString* text in texts)
        found.push_back(plain(text));
    return found;
}

} // namespace

@implementation PHFetchOptions
- (void)setPredicate:(NSPredicate*)predicate {
    NSComparisonPredicate* const comparison = static_cast<NSComparisonPredicate*>(predicate);
    behind<backing::PHFetchOptions>(self).predicate = backing::predicateWithFormat(
        plain([[comparison leftExpression] keyPath]) + " == %@",
        plain(static_cast<NSString*>([[comparison rightExpression] constantValue])));
}
- (void)setSortDescriptors:(NSArray*)descriptors {
    for (NSSortDescriptor* descriptor in descriptors)
        behind<backing::PHFetchOptions>(self).sortDescriptors.push_back(
            {plain([descriptor key]), static_cast<bool>([descriptor ascending])});
}
@end

@implementation PHFetchResult
- (NSUInteger)count {
    return behind<Fetched>(self).count();
}
- (id)objectAtIndex:(NSUInteger)index {
    return behind<Fetched>(self).at(index);
}
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id*)buffer
                                    count:(NSUInteger)count {
    return 0; // changes ask for the whole of it
}
@end

@implementation PHObject
READS_TEXT(localIdentifier, PHObjectPlaceholder)
@end

@implementation PHObjectPlaceholder
@end

@implementation PHAsset
+ (PHFetchResult*)fetchAssetsWithOptions:(PHFetchOptions*)options {
    return fetched(backing::fetchAssetsWithOptions(behind<backing::PHFetchOptions>(options)));
}
+ (PHFetchResult*)fetchAssetsWithLocalIdentifiers:(NSArray*)identifiers
                                          options:(PHFetchOptions*)options {
    return fetched(backing::fetchAssetsWithLocalIdentifiers(textsIn(identifiers)), options);
}
+ (PHFetchResult*)fetchAssetsInAssetCollection:(PHAssetCollection*)collection
                                       options:(PHFetchOptions*)options {
    return fetched(backing::fetchAssetsInAssetCollection(
        behind<backing::PHAssetCollection>(collection),
        options == nil ? nullptr : &behind<backing::PHFetchOptions>(options)));
}
READS_TEXT(localIdentifier, PHAsset)
READS(PHAssetMediaType, mediaType, PHAsset)
READS(NSUInteger, pixelWidth, PHAsset)
READS(NSUInteger, pixelHeight, PHAsset)
- (NSDate*)creationDate {
    const auto date = behind<backing::PHAsset>(self).creationDate;
    return date ? [NSDate dateWithTimeIntervalSince1970:*date] : nil;
}
READS(BOOL, isFavorite, PHAsset)
READS(BOOL, isHidden, PHAsset)
- (PHContentEditingInputRequestID)
    requestContentEditingInputWithOptions:(PHContentEditingInputRequestOptions*)options
                        completionHandler:
                            (void (^)(PHContentEditingInput* input, NSDictionary* info))handler {
    backing::requestContentEditingInputWithOptions(
        behind<backing::PHAsset>(self),
        behind<backing::PHContentEditingInputRequestOptions>(options),
        [kept = Kept(handler)](const std::optional<backing::PHContentEditingInput>& input) {
            handOver([&] { return objectOf([PHContentEditingInput class], input); },
                     [&](id object) { kept.get()(object, nil); });
        });
    return 1;
}
@end

@implementation PHCollection
+ (PHFetchResult*)fetchCollectionsInCollectionList:(PHCollectionList*)list
                                           options:(PHFetchOptions*)options {
    return fetched(
        backing::fetchCollectionsInCollectionList(behind<backing::PHCollectionList>(list)),
        options);
}
+ (PHFetchResult*)fetchTopLevelUserCollectionsWithOptions:(PHFetchOptions*)options {
    return fetched(backing::fetchTopLevelUserCollections(), options);
}
- (NSString*)localizedTitle {
    return nil; // told by its kinds
}
@end

@implementation PHAssetCollection
+ (PHFetchResult*)fetchAssetCollectionsWithLocalIdentifiers:(NSArray*)identifiers
                                                    options:(PHFetchOptions*)options {
    return fetched(backing::fetchAssetCollectionsWithLocalIdentifiers(textsIn(identifiers)),
                   options);
}
+ (PHFetchResult*)fetchAssetCollectionsWithType:(PHAssetCollectionType)type
                                        subtype:(PHAssetCollectionSubtype)subtype
                                        options:(PHFetchOptions*)options {
    return fetched(backing::fetchAssetCollectionsWithType(type, subtype), options);
}
+ (PHFetchResult*)fetchAssetCollectionsContainingAsset:(PHAsset*)asset
                                              withType:(PHAssetCollectionType)type
                                               options:(PHFetchOptions*)options {
    return fetched(
        backing::fetchAssetCollectionsContainingAsset(behind<backing::PHAsset>(asset), type),
        options);
}
READS_TEXT(localIdentifier, PHAssetCollection)
READS_TEXT(localizedTitle, PHAssetCollection)
READS(PHAssetCollectionType, assetCollectionType, PHAssetCollection)
@end

@implementation PHCollectionList
+ (PHFetchResult*)fetchCollectionListsWithLocalIdentifiers:(NSArray*)identifiers
                                                   options:(PHFetchOptions*)options {
    return fetched(backing::fetchCollectionListsWithLocalIdentifiers(textsIn(identifiers)),
                   options);
}
+ (PHFetchResult*)fetchCollectionListsContainingCollection:(PHCollection*)collection
                                                   options:(PHFetchOptions*)options {
    return fetched(backing::fetchCollectionListsContainingCollection(collectionBehind(collection)),
                   options);
}
READS_TEXT(localIdentifier, PHCollectionList)
READS_TEXT(localizedTitle, PHCollectionList)
@end

// ---- Resources ----

@implementation PHAssetResource
+ (NSArray*)assetResourcesForAsset:(PHAsset*)asset {
    NSMutableArray* const resources = [NSMutableArray array];
    for (const auto& one : backing::assetResourcesForAsset(behind<backing::PHAsset>(asset)))
        [resources addObject:objectOf([PHAssetResource class], one)];
    return resources;
}
READS(PHAssetResourceType, type, PHAssetResource)
READS_TEXT(originalFilename, PHAssetResource)
READS_TEXT(uniformTypeIdentifier, PHAssetResource)
@end

@implementation PHAssetResourceRequestOptions
TAKES(NetworkAccessAllowed, BOOL, PHAssetResourceRequestOptions, networkAccessAllowed)
@end

@implementation PHAssetResourceManager
+ (PHAssetResourceManager*)defaultManager {
    static PHAssetResourceManager* const manager = [[self alloc] init];
    return manager;
}
- (PHAssetResourceDataRequestID)requestDataForAssetResource:(PHAssetResource*)resource
                                                    options:(PHAssetResourceRequestOptions*)options
                                        dataReceivedHandler:(void (^)(NSData* data))received
                                          completionHandler:(void (^)(NSError* error))completed {
    return backing::requestDataForAssetResource(
        behind<backing::PHAssetResource>(resource),
        behind<backing::PHAssetResourceRequestOptions>(options),
        [kept = Kept(received)](std::span<const std::uint8_t> bytes) {
            handOver([&] { return dataOf(bytes); }, [&](id data) { kept.get()(data); });
        },
        [kept = Kept(completed)](const std::optional<backing::NSError>& error) {
            handOver([&] { return errorOf(error); }, [&](id object) { kept.get()(object); });
        });
}
- (void)cancelDataRequest:(PHAssetResourceDataRequestID)request {
    backing::cancelDataRequest(request);
}
@end
