// The native methods of com.morrowfen.lumatrice.service.PhotosService, bound by their names.
//
// Any thread of the host may call them, several at once. Each blocks its caller until the photo
// library has answered, without a time limit. The receiving object is never used. Assets, albums
// and folders are named by their local identifiers. Failures are result values: no method throws
// into the host or looks at a pending host exception; a C++ exception, which only exhausted memory
// can raise here, ends the process instead of unwinding through the JVM.
//
// Codes: 0 or more is success, a count where the method counts; -1 means that nothing was
// started; other negative values are the method's own. How text crosses: bridge/arguments.h and
// bridge/results.h. A result string or array is null as well when the JVM cannot make it.
#pragma once

#include <jni.h>

// clang-format off
#ifdef __cplusplus
#define PHOTOS_KIT_NOEXCEPT noexcept
extern "C" {
#else
#define PHOTOS_KIT_NOEXCEPT
#endif

// ---- Access and browsing ----

// Asks for access to the library, reading and writing; may ask the user.
//  1  full access
//  2  limited access: only the assets that the user picked
//  0  none: denied, restricted or undecided
// Must not be called from a thread that the library needs to answer.
JNIEXPORT jint JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeAuthorize(
    JNIEnv* env, jobject self) PHOTOS_KIT_NOEXCEPT;

// One page of the whole library, newest first, as a JSON array of asset records; never null for a
// lack of assets. A negative count or offset counts as 0; past the end the page is "[]".
JNIEXPORT jstring JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeListAssets(
    JNIEnv* env, jobject self, jint count, jint offset) PHOTOS_KIT_NOEXCEPT;

// The number of assets in the library; only the low 32 bits of it.
JNIEXPORT jint JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeAssetCount(
    JNIEnv* env, jobject self) PHOTOS_KIT_NOEXCEPT;

// The direct children of a folder as a JSON array of collection records; with null or an empty
// text those of the top level, followed by the smart albums that hold assets. "[]" for an unknown
// folder.
JNIEXPORT jstring JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeListAlbums(
    JNIEnv* env, jobject self, jstring parentFolderId) PHOTOS_KIT_NOEXCEPT;

// One page of an album as a JSON array of asset records with "isHidden": user albums newest
// first, smart albums in the library's order. Bounds as for nativeListAssets; "[]" for an unknown
// album or a folder.
JNIEXPORT jstring JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeListAlbumAssets(
    JNIEnv* env, jobject self, jstring albumId, jint count, jint offset) PHOTOS_KIT_NOEXCEPT;

// The identifier of the folder that directly holds the album or folder; empty at the top level
// and for an unknown collection.
JNIEXPORT jstring JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeParentCollection(
    JNIEnv* env, jobject self, jstring collectionId) PHOTOS_KIT_NOEXCEPT;

// The title of the album or folder as it is now, empty if it has none; null for an unknown
// collection.
JNIEXPORT jstring JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeCollectionTitle(
    JNIEnv* env, jobject self, jstring collectionId) PHOTOS_KIT_NOEXCEPT;

// Whether an album holds an asset.
//  1  it does
//  0  it does not
// -1  an argument is null or unreadable, or the album is unknown
JNIEXPORT jint JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeAlbumContainsAsset(
    JNIEnv* env, jobject self, jstring albumId, jstring assetId) PHOTOS_KIT_NOEXCEPT;

// ---- Pictures and files ----

// A JPEG that covers width x height pixels; null when the asset is unknown, has no picture, or the
// JVM has no room for the bytes. `assetId` must not be null.
JNIEXPORT jbyteArray JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeRequestThumbnail(
    JNIEnv* env, jobject self, jstring assetId, jint width, jint height) PHOTOS_KIT_NOEXCEPT;

// Copies the asset's current file to a new file, whose missing parent directories are made and
// which replaces whatever stood there. The arguments must not be null.
//  0  complete
// -1  unknown asset
// -2  the asset has no file that can be exported
// -3  the destination could not be opened, or the transfer failed
// -4  cancelled
// After -3 and -4 what was written stays.
JNIEXPORT jint JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeExportToFile(
    JNIEnv* env, jobject self, jstring assetId, jstring destinationPath, jint exportRequestId) PHOTOS_KIT_NOEXCEPT;

// Cancels the export that runs under this id, from another thread. Does nothing without one.
JNIEXPORT void JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeCancelExport(
    JNIEnv* env, jobject self, jint exportRequestId) PHOTOS_KIT_NOEXCEPT;

// Copies the asset's unedited picture to a file, in a directory that exists.
//  0  done
// -1  an argument is null or unreadable, or the asset is unknown
// -2  the asset cannot be edited
// -3  the copy failed
JNIEXPORT jint JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeContentEditingImage(
    JNIEnv* env, jobject self, jstring assetId, jstring destinationPath) PHOTOS_KIT_NOEXCEPT;

// Makes a rendered JPEG file the asset's current picture, as an edit that can be reverted.
//  0  done
// -1  an argument is null or unreadable, or the asset is unknown
// -2  the asset cannot be edited
// -3  the rendered file could not be read or handed over
// -4  the change failed
// After anything but 0 the asset is as it was.
JNIEXPORT jint JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeApplyEdit(
    JNIEnv* env, jobject self, jstring assetId, jstring renderedPath) PHOTOS_KIT_NOEXCEPT;

// ---- Changes to assets ----

// Adds a copy of each file as a new asset, each in a change of its own. One element per usable path
// (null, unreadable and undecodable elements of `paths` take no place): the new identifier, or null
// where that file failed. Null when no path is usable, or the JVM cannot make the array.
JNIEXPORT jobjectArray JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeImportAssets(
    JNIEnv* env, jobject self, jobjectArray paths) PHOTOS_KIT_NOEXCEPT;

// All or none.
//  n  that many assets were deleted
// -1  no usable identifier, or no asset has one of them
// -2  the user refused
// -3  the change failed
JNIEXPORT jint JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeDeleteAssets(
    JNIEnv* env, jobject self, jobjectArray assetIds) PHOTOS_KIT_NOEXCEPT;

// All or none. Only JNI_TRUE sets; any other value clears.
//  n  that many assets were found and written
// -1  no usable identifier, or no asset has one of them
// -2  the change failed
JNIEXPORT jint JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeSetFavorite(
    JNIEnv* env, jobject self, jobjectArray assetIds, jboolean favorite) PHOTOS_KIT_NOEXCEPT;

// As nativeSetFavorite, for the hidden mark.
JNIEXPORT jint JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeSetHidden(
    JNIEnv* env, jobject self, jobjectArray assetIds, jboolean hidden) PHOTOS_KIT_NOEXCEPT;

// Gives the target the source's favourite mark, if it has one, and adds it to every user album that
// holds the source.
//  n  the number of albums that took the target
// -1  an argument is null or unreadable, or an asset is unknown
JNIEXPORT jint JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeCopyAssetAttributes(
    JNIEnv* env, jobject self, jstring sourceAssetId, jstring targetAssetId) PHOTOS_KIT_NOEXCEPT;

// All or none.
//  n  that many assets were found and added
// -1  no usable argument, or the album or all of the assets are unknown
// -2  a smart album, or the change failed
JNIEXPORT jint JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeAddAssetsToAlbum(
    JNIEnv* env, jobject self, jstring albumId, jobjectArray assetIds) PHOTOS_KIT_NOEXCEPT;

// As nativeAddAssetsToAlbum, taking the assets out.
JNIEXPORT jint JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeRemoveAssetsFromAlbum(
    JNIEnv* env, jobject self, jstring albumId, jobjectArray assetIds) PHOTOS_KIT_NOEXCEPT;

// ---- Albums and folders ----

// The identifier of a new, empty album in the folder, or at the top level for null or an empty
// text. Null when there is no title, no such folder, or the change failed; an album that could not
// be filed into its folder stays at the top level.
JNIEXPORT jstring JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeCreateAlbum(
    JNIEnv* env, jobject self, jstring title, jstring parentFolderId) PHOTOS_KIT_NOEXCEPT;

// As nativeCreateAlbum, for a folder.
JNIEXPORT jstring JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeCreateFolder(
    JNIEnv* env, jobject self, jstring title, jstring parentFolderId) PHOTOS_KIT_NOEXCEPT;

// Renames an album or a folder.
//  0  done
// -1  an argument is null or unreadable, the title is empty, or the collection is unknown
// -2  a smart album, or the change failed
JNIEXPORT jint JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeRenameAlbum(
    JNIEnv* env, jobject self, jstring collectionId, jstring title) PHOTOS_KIT_NOEXCEPT;

// Deletes an album or a folder, never assets.
//  0  done
// -1  the argument is null or unreadable, or the collection is unknown
// -2  a smart album, or the change failed
JNIEXPORT jint JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeDeleteAlbum(
    JNIEnv* env, jobject self, jstring collectionId) PHOTOS_KIT_NOEXCEPT;

// The identifier of a copy, beside the original, of an album or of a folder with all that is in it;
// the assets are shared. Null for an unknown collection or a smart album, or when the change
// failed. Of a folder, what could be copied stays.
JNIEXPORT jstring JNICALL Java_com_morrowfen_lumatrice_service_PhotosService_nativeDuplicateCollection(
    JNIEnv* env, jobject self, jstring collectionId) PHOTOS_KIT_NOEXCEPT;

#ifdef __cplusplus
} // extern "C"
#endif
// clang-format on
