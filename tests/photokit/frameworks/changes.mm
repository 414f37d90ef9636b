// The library, its transactions and the change requests.
#import "tests/photokit/frameworks/stand_in.h"

#include <algorithm>

using namespace standin;

using Effects = std::vector<std::function<void(Script&)>>;

static thread_local Effects* g_effects = nullptr; // of the change block that this thread runs
static thread_local const Change* g_change = nullptr;

namespace standin {

bool noteRequest(const std::string& line) {
    note(g_effects ? line : "OUTSIDE A CHANGE BLOCK: " + line);
    return g_effects != nullptr;
}

void atCommit(std::function<void(Script&)> effect) {
    if (g_effects)
        g_effects->push_back(std::move(effect));
}

const Change& currentChange() {
    static const Change none;
    return g_change ? *g_change : none;
}

std::string newIdentifier(const std::string& suffix) {
    static std::atomic<int> next = 1;
    return "new-" + std::to_string(next++) + suffix;
}

PHObjectPlaceholder* newPlaceholder(NSString* identifier) {
    PHObjectPlaceholder* const placeholder = [[PHObjectPlaceholder alloc] init];
    setValue(placeholder, @"id", identifier);
    return placeholder;
}

} // namespace standin

static Change nextChange() {
    const std::lock_guard lock(mutex());
    if (script().changes.empty())
        return {};
    const Change change = script().changes.front();
    script().changes.pop_front();
    return change;
}

// On a thread of its own, as the library does it; the thread's pool is gone when it ends.
static void runChanges(const Change& change, Effects& effects, void (^changes)(void)) {
    std::thread([&] {
        NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
        g_effects = &effects;
        g_change = &change;
        changes();
        g_effects = nullptr;
        g_change = nullptr;
        [pool drain];
    }).join();
}

@implementation PHPhotoLibrary
+ (PHPhotoLibrary*)sharedPhotoLibrary {
    static PHPhotoLibrary* const library = [[self alloc] init];
    return library;
}
+ (PHAuthorizationStatus)authorizationStatusForAccessLevel:(PHAccessLevel)level {
    note("authorization status for level " + std::to_string(level));
    return static_cast<PHAuthorizationStatus>(script().authorization);
}
+ (void)requestAuthorizationForAccessLevel:(PHAccessLevel)level
                                   handler:(void (^)(PHAuthorizationStatus status))handler {
    note("request authorization for level " + std::to_string(level));
    void (^kept)(PHAuthorizationStatus) = Block_copy(handler);
    answer([kept] {
        kept(static_cast<PHAuthorizationStatus>(script().authorization));
        Block_release(kept);
    });
}
- (BOOL)performChangesAndWait:(void (^)(void))changes error:(NSError**)error {
    const Change change = nextChange();
    note("begin changes");
    Effects effects;
    void (^kept)(void) = Block_copy(changes);
    runChanges(change, effects, kept);
    Block_release(kept);
    note(change.done ? "changes done" : "changes refused");
    if (change.failure)
        *error = errorOf(change.failure);
    const std::lock_guard lock(mutex());
    if (change.done && change.takesEffect) {
        for (const auto& effect : effects)
            effect(script());
    }
    return change.done;
}
@end

static NSString* identifierOf(StandInObject* request) {
    return [request->values objectForKey:@"id"];
}

// What the running transaction says about the request's new object.
static PHObjectPlaceholder* placeholderOf(StandInObject* request) {
    if (!currentChange().makesPlaceholders)
        return nil;
    return [newPlaceholder(identifierOf(request)) autorelease];
}

static std::vector<std::string> listOf(id<NSFastEnumeration> objects) {
    std::vector<std::string> list;
    for (PHObject* object in objects)
        list.push_back(plain([object localIdentifier]));
    return list;
}

template <class Record>
static void eraseFrom(std::vector<Record>& records, const std::vector<std::string>& ids) {
    std::erase_if(records, [&](const Record& record) {
        return std::count(ids.begin(), ids.end(), record.id) != 0;
    });
}

@implementation PHAssetChangeRequest
+ (instancetype)changeRequestForAsset:(PHAsset*)asset {
    noteRequest("change asset " + plain([asset localIdentifier]));
    PHAssetChangeRequest* const request = [[[self alloc] init] autorelease];
    setValue(request, @"id", [asset localIdentifier]);
    return request;
}
+ (void)deleteAssets:(id<NSFastEnumeration>)assets {
    noteRequest("delete assets " + identifiers(assets));
    atCommit([ids = listOf(assets)](Script& script) { eraseFrom(script.assets, ids); });
}
- (PHObjectPlaceholder*)placeholderForCreatedAsset {
    return placeholderOf(self);
}
- (void)setFavorite:(BOOL)favorite {
    noteRequest("set favorite " + yesOrNo(favorite));
    atCommit([id = plain(identifierOf(self)), favorite](Script& script) {
        script.asset(id).favorite = favorite;
    });
}
- (void)setHidden:(BOOL)hidden {
    noteRequest("set hidden " + yesOrNo(hidden));
    atCommit([id = plain(identifierOf(self)), hidden](Script& script) {
        script.asset(id).hidden = hidden;
    });
}
- (void)setContentEditingOutput:(PHContentEditingOutput*)output {
    PHAdjustmentData* const data = [output->values objectForKey:@"data"];
    noteRequest(std::string("set editing output") + (data == nil ? " without data" : ""));
}
@end

@implementation PHAssetResourceCreationOptions
- (void)setShouldMoveFile:(BOOL)shouldMove {
    note("creation: move file " + yesOrNo(shouldMove));
}
- (void)setOriginalFilename:(NSString*)name {
    setValue(self, @"name", name);
    note("creation: name " + plain(name));
}
@end

@implementation PHAssetCreationRequest
+ (instancetype)creationRequestForAsset {
    noteRequest("create asset");
    PHAssetCreationRequest* const request = [[[self alloc] init] autorelease];
    setValue(request, @"id", text(newIdentifier("/L0/001")));
    return request;
}
- (void)addResourceWithType:(PHAssetResourceType)type
                    fileURL:(NSURL*)url
                    options:(PHAssetResourceCreationOptions*)options {
    noteRequest("add resource of type " + std::to_string(type) + " from " + plain([url path]));
    Asset asset{.id = plain(identifierOf(self)),
                .mediaType = type == 2 ? 2 : 1,
                .width = script().importedWidth,
                .height = script().importedHeight};
    asset.resources = {
        {.type = type,
         .name = plain(static_cast<NSString*>([options->values objectForKey:@"name"]))}};
    asset.created = [[[[NSFileManager defaultManager] fileAttributesAtPath:[url path]
                                                              traverseLink:YES]
        fileModificationDate] timeIntervalSince1970];
    atCommit([asset](Script& script) {
        script.assets.push_back(asset);
        for (Collection& collection : script.collections) {
            if (collection.type == 2)
                collection.assets.push_back(asset.id);
        }
    });
}
@end

// ---- Albums and folders ----

static void createCollection(StandInObject* request, NSString* title, long type) {
    noteRequest((type == 0 ? "create folder " : "create album ") + plain(title));
    setValue(request, @"id", text(newIdentifier(type == 0 ? "/L0/020" : "/L0/040")));
    atCommit(
        [collection =
             Collection{.id = plain(identifierOf(request)), .title = plain(title), .type = type}](
            Script& script) { script.collections.push_back(collection); });
}

static void retitle(StandInObject* request, NSString* title) {
    noteRequest("set title " + plain(title));
    atCommit([id = plain(identifierOf(request)), name = plain(title)](Script& script) {
        if (Collection* const collection = script.collection(id))
            collection->title = name;
    });
}

static void deleteCollections(const char* line, id<NSFastEnumeration> collections) {
    noteRequest(line + identifiers(collections));
    atCommit([ids = listOf(collections)](Script& script) {
        eraseFrom(script.collections, ids);
        const auto isLost = [&](const Collection& one) {
            return !one.parent.empty() && !script.collection(one.parent);
        };
        for (std::size_t before = 0; before != script.collections.size();) {
            before = script.collections.size();
            std::vector<std::string> lost;
            for (const Collection& one : script.collections) {
                if (isLost(one))
                    lost.push_back(one.id);
            }
            eraseFrom(script.collections, lost);
        }
    });
}

@implementation PHAssetCollectionChangeRequest
+ (instancetype)creationRequestForAssetCollectionWithTitle:(NSString*)title {
    PHAssetCollectionChangeRequest* const request = [[[self alloc] init] autorelease];
    createCollection(request, title, 1);
    return request;
}
+ (instancetype)changeRequestForAssetCollection:(PHAssetCollection*)collection {
    noteRequest("change album " + plain([collection localIdentifier]));
    if (!currentChange().makesRequests)
        return nil;
    PHAssetCollectionChangeRequest* const request = [[[self alloc] init] autorelease];
    setValue(request, @"id", [collection localIdentifier]);
    return request;
}
+ (void)deleteAssetCollections:(id<NSFastEnumeration>)collections {
    deleteCollections("delete albums ", collections);
}
- (PHObjectPlaceholder*)placeholderForCreatedAssetCollection {
    return placeholderOf(self);
}
- (void)setTitle:(NSString*)title {
    retitle(self, title);
}
- (void)addAssets:(id<NSFastEnumeration>)assets {
    noteRequest("add assets " + identifiers(assets));
    atCommit([id = plain(identifierOf(self)), added = listOf(assets)](Script& script) {
        auto& members = script.collection(id)->assets;
        members.insert(members.end(), added.begin(), added.end());
    });
}
- (void)removeAssets:(id<NSFastEnumeration>)assets {
    noteRequest("remove assets " + identifiers(assets));
    atCommit([id = plain(identifierOf(self)), removed = listOf(assets)](Script& script) {
        for (const std::string& asset : removed)
            std::erase(script.collection(id)->assets, asset);
    });
}
@end

@implementation PHCollectionListChangeRequest
+ (instancetype)creationRequestForCollectionListWithTitle:(NSString*)title {
    PHCollectionListChangeRequest* const request = [[[self alloc] init] autorelease];
    createCollection(request, title, 0);
    return request;
}
+ (instancetype)changeRequestForCollectionList:(PHCollectionList*)list {
    noteRequest("change folder " + plain([list localIdentifier]));
    if (!currentChange().makesRequests)
        return nil;
    PHCollectionListChangeRequest* const request = [[[self alloc] init] autorelease];
    setValue(request, @"id", [list localIdentifier]);
    return request;
}
+ (void)deleteCollectionLists:(id<NSFastEnumeration>)lists {
    deleteCollections("delete folders ", lists);
}
- (PHObjectPlaceholder*)placeholderForCreatedCollectionList {
    return placeholderOf(self);
}
- (void)setTitle:(NSString*)title {
    retitle(self, title);
}
- (void)addChildCollections:(id<NSFastEnumeration>)collections {
    noteRequest("add children " + identifiers(collections));
    atCommit([id = plain(identifierOf(self)), children = listOf(collections)](Script& script) {
        for (const std::string& child : children)
            script.collection(child)->parent = id;
    });
}
@end
