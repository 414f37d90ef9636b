// Declarations of the part of the Photos framework that the adapter uses, written from its
// documented interface. The stand-in implements them; type checks for a Mac read them as well.
#pragma once

#import <Foundation/Foundation.h>

#import <AppKit/AppKit.h>

// Their values are the ones that the facade gives.
enum PHAccessLevel : NSInteger;
enum PHAuthorizationStatus : NSInteger;
enum PHAssetMediaType : NSInteger;
enum PHAssetCollectionType : NSInteger;
enum PHAssetCollectionSubtype : NSInteger;
enum PHAssetResourceType : NSInteger;
enum PHImageContentMode : NSInteger;
enum PHImageRequestOptionsVersion : NSInteger;
enum PHImageRequestOptionsDeliveryMode : NSInteger;
enum PHImageRequestOptionsResizeMode : NSInteger;
typedef int32_t PHImageRequestID;
typedef int32_t PHAssetResourceDataRequestID;
typedef NSUInteger PHContentEditingInputRequestID;

@class PHAsset, PHAssetCollection, PHCollection, PHCollectionList, PHContentEditingInput;
@class PHContentEditingOutput, PHContentEditingInputRequestOptions;

@interface PHFetchOptions : StandInObject
- (void)setPredicate:(NSPredicate*)predicate;
- (void)setSortDescriptors:(NSArray*)descriptors;
@end

@interface PHFetchResult<__covariant ObjectType> : StandInObject <NSFastEnumeration>
- (NSUInteger)count;
- (ObjectType)objectAtIndex:(NSUInteger)index;
@end

@interface PHObject : StandInObject
- (NSString*)localIdentifier;
@end

@interface PHObjectPlaceholder : PHObject
@end

@interface PHAsset : PHObject
+ (PHFetchResult<PHAsset*>*)fetchAssetsWithOptions:(PHFetchOptions*)options;
+ (PHFetchResult<PHAsset*>*)fetchAssetsWithLocalIdentifiers:(NSArray*)identifiers
                                                    options:(PHFetchOptions*)options;
+ (PHFetchResult<PHAsset*>*)fetchAssetsInAssetCollection:(PHAssetCollection*)collection
                                                 options:(PHFetchOptions*)options;
- (PHAssetMediaType)mediaType;
- (NSUInteger)pixelWidth;
- (NSUInteger)pixelHeight;
- (NSDate*)creationDate;
- (BOOL)isFavorite;
- (BOOL)isHidden;
- (PHContentEditingInputRequestID)
    requestContentEditingInputWithOptions:(PHContentEditingInputRequestOptions*)options
                        completionHandler:
                            (void (^)(PHContentEditingInput* input, NSDictionary* info))handler;
@end

@interface PHCollection : PHObject
+ (PHFetchResult<PHCollection*>*)fetchCollectionsInCollectionList:(PHCollectionList*)list
                                                          options:(PHFetchOptions*)options;
+ (PHFetchResult<PHCollection*>*)fetchTopLevelUserCollectionsWithOptions:(PHFetchOptions*)options;
- (NSString*)localizedTitle;
@end

@interface PHAssetCollection : PHCollection
+ (PHFetchResult<PHAssetCollection*>*)
    fetchAssetCollectionsWithLocalIdentifiers:(NSArray*)identifiers
                                      options:(PHFetchOptions*)options;
+ (PHFetchResult<PHAssetCollection*>*)fetchAssetCollectionsWithType:(PHAssetCollectionType)type
                                                            subtype:
                                                                (PHAssetCollectionSubtype)subtype
                                                            options:(PHFetchOptions*)options;
+ (PHFetchResult<PHAssetCollection*>*)fetchAssetCollectionsContainingAsset:(PHAsset*)asset
                                                                  withType:
                                                                      (PHAssetCollectionType)type
                                                                   options:(PHFetchOptions*)options;
- (PHAssetCollectionType)assetCollectionType;
@end

@interface PHCollectionList : PHCollection
+ (PHFetchResult<PHCollectionList*>*)fetchCollectionListsWithLocalIdentifiers:(NSArray*)identifiers
                                                                      options:
                                                                          (PHFetchOptions*)options;
+ (PHFetchResult<PHCollectionList*>*)
    fetchCollectionListsContainingCollection:(PHCollection*)collection
                                     options:(PHFetchOptions*)options;
@end

@interface PHPhotoLibrary : NSObject
+ (PHPhotoLibrary*)sharedPhotoLibrary;
+ (PHAuthorizationStatus)authorizationStatusForAccessLevel:(PHAccessLevel)level;
+ (void)requestAuthorizationForAccessLevel:(PHAccessLevel)level
                                   handler:(void (^)(PHAuthorizationStatus status))handler;
- (BOOL)performChangesAndWait:(void (^)(void))changes error:(NSError**)error;
@end

@interface PHAssetChangeRequest : StandInObject
+ (instancetype)changeRequestForAsset:(PHAsset*)asset;
+ (void)deleteAssets:(id<NSFastEnumeration>)assets;
- (PHObjectPlaceholder*)placeholderForCreatedAsset;
- (void)setFavorite:(BOOL)favorite;
- (void)setHidden:(BOOL)hidden;
- (void)setContentEditingOutput:(PHContentEditingOutput*)output;
@end

@interface PHAssetResourceCreationOptions : StandInObject
- (void)setShouldMoveFile:(BOOL)shouldMove;
- (void)setOriginalFilename:(NSString*)name;
@end

@interface PHAssetCreationRequest : PHAssetChangeRequest
+ (instancetype)creationRequestForAsset;
- (void)addResourceWithType:(PHAssetResourceType)type
                    fileURL:(NSURL*)url
                    options:(PHAssetResourceCreationOptions*)options;
@end

@interface PHAssetCollectionChangeRequest : StandInObject
+ (instancetype)creationRequestForAssetCollectionWithTitle:(NSString*)title;
+ (instancetype)changeRequestForAssetCollection:(PHAssetCollection*)collection;
+ (void)deleteAssetCollections:(id<NSFastEnumeration>)collections;
- (PHObjectPlaceholder*)placeholderForCreatedAssetCollection;
- (void)setTitle:(NSString*)title;
- (void)addAssets:(id<NSFastEnumeration>)assets;
- (void)removeAssets:(id<NSFastEnumeration>)assets;
@end

@interface PHCollectionListChangeRequest : StandInObject
+ (instancetype)creationRequestForCollectionListWithTitle:(NSString*)title;
+ (instancetype)changeRequestForCollectionList:(PHCollectionList*)list;
+ (void)deleteCollectionLists:(id<NSFastEnumeration>)lists;
- (PHObjectPlaceholder*)placeholderForCreatedCollectionList;
- (void)setTitle:(NSString*)title;
- (void)addChildCollections:(id<NSFastEnumeration>)collections;
@end

@interface PHAssetResource : StandInObject
+ (NSArray<PHAssetResource*>*)assetResourcesForAsset:(PHAsset*)asset;
- (PHAssetResourceType)type;
- (NSString*)originalFilename;
- (NSString*)uniformTypeIdentifier;
@end

@interface PHAssetResourceRequestOptions : StandInObject
- (void)setNetworkAccessAllowed:(BOOL)allowed;
@end

@interface PHAssetResourceManager : NSObject
+ (PHAssetResourceManager*)defaultManager;
- (PHAssetResourceDataRequestID)requestDataForAssetResource:(PHAssetResource*)resource
                                                    options:(PHAssetResourceRequestOptions*)options
                                        dataReceivedHandler:(void (^)(NSData* data))received
                                          completionHandler:(void (^)(NSError* error))completed;
- (void)cancelDataRequest:(PHAssetResourceDataRequestID)request;
@end

@interface PHImageRequestOptions : StandInObject
- (void)setSynchronous:(BOOL)synchronous;
- (void)setDeliveryMode:(PHImageRequestOptionsDeliveryMode)mode;
- (void)setResizeMode:(PHImageRequestOptionsResizeMode)mode;
- (void)setNetworkAccessAllowed:(BOOL)allowed;
- (void)setVersion:(PHImageRequestOptionsVersion)version;
@end

@interface PHImageManager : NSObject
+ (PHImageManager*)defaultManager;
- (PHImageRequestID)requestImageForAsset:(PHAsset*)asset
                              targetSize:(NSSize)size
                             contentMode:(PHImageContentMode)mode
                                 options:(PHImageRequestOptions*)options
                           resultHandler:(void (^)(NSImage* image, NSDictionary* info))handler;
@end

@interface PHAdjustmentData : StandInObject
- (instancetype)initWithFormatIdentifier:(NSString*)identifier
                           formatVersion:(NSString*)version
                                    data:(NSData*)data;
- (NSString*)formatIdentifier;
- (NSString*)formatVersion;
- (NSData*)data;
@end

@interface PHContentEditingInputRequestOptions : StandInObject
- (void)setNetworkAccessAllowed:(BOOL)allowed;
- (void)setCanHandleAdjustmentData:(BOOL (^)(PHAdjustmentData* data))test;
@end

@interface PHContentEditingInput : StandInObject
- (NSURL*)fullSizeImageURL;
@end

@interface PHContentEditingOutput : StandInObject
- (instancetype)initWithContentEditingInput:(PHContentEditingInput*)input;
- (NSURL*)renderedContentURL;
- (void)setAdjustmentData:(PHAdjustmentData*)data;
@end
