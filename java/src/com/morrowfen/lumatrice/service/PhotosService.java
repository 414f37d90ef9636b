package com.morrowfen.lumatrice.service;

import java.nio.file.Path;

/**
 * The user's photo library, reached through the native library {@code libphotos_kit}.
 *
 * <p>Assets (photos and videos), albums and folders are named by local identifiers: strings that
 * the listings and the creating methods hand out. Every method may be called from any thread,
 * several at once, and blocks its caller until the photo library has answered, without a time
 * limit; keep them off a user interface's thread. Failures are result values, never exceptions.
 * Why something failed is in the diagnostic log,
 * {@code $HOME/.lumatrice/logs/photos-native.log}, if the directory exists, and on standard error.
 *
 * <p><b>Result codes.</b> 0 or more is success, a count where the method counts. -1 means that
 * nothing was started: an argument was null, empty or unusable, or the identifier is unknown.
 * Other negative values are the method's own.
 *
 * <p><b>Text into the library.</b> Strings cross as the JVM's modified UTF-8 and are read there as
 * strict standard UTF-8. The two differ for U+0000 and for characters outside the Basic
 * Multilingual Plane, such as emoji: a string with one of these counts as missing, as if it were
 * null, and an array element as if it were not there.
 *
 * <p><b>Text out of the library.</b> Results are standard UTF-8 handed to the JVM as they stand,
 * which cannot read characters outside the Basic Multilingual Plane in it. The embedded library hands
 * out names and titles with U+FFFD for each of them, such as emoji; the true ones are kept, but a
 * copy of an album or folder is titled as the original was handed out. On a Mac such a character
 * arrives garbled, as a few wrong characters, and the JVM cuts characters off the end of the text: a
 * listing that holds one is no longer complete JSON. Everything else arrives as it is.
 */
public final class PhotosService {
    /**
     * Finds and loads the native library, if it is not loaded yet. The first of these places that
     * has one counts:
     *
     * <ol>
     *   <li>the file, or the folder that holds it, that the system property
     *       {@code photos.kit.path} names; if it is set, no other place is looked at;
     *   <li>the absolute folders of {@code java.library.path};
     *   <li>the folders of an installed package: {@code jni} in
     *       {@code /usr/lib/<architecture>-linux-gnu}, that folder itself, {@code photos-kit} in
     *       it;
     *   <li>the native parts in the jar. They are extracted once, to
     *       {@code $XDG_CACHE_HOME/photos-kit} or else {@code $HOME/.cache/photos-kit}, a folder
     *       that must be this user's alone, and checked against the jar then, and again whenever
     *       they do not look as they did. What no process has used for 90 days goes.
     * </ol>
     *
     * <p>From JDK 24 on, {@code --enable-native-access=com.morrowfen.lumatrice.photos} on the
     * command line (or {@code ALL-UNNAMED}, when the jar is on the class path) lets this pass
     * without a warning. The line {@code Enable-Native-Access} in a manifest counts only in the jar
     * that is started with {@code java -jar}.
     *
     * @throws PhotosLoadException if none can be loaded, or this process has loaded another copy;
     *     the message says what to do
     */
    public PhotosService() {
        NativeLoader.load();
    }

    /**
     * Loads the native library from a file. Loading the same file again does nothing.
     *
     * @param library where the library lies
     * @throws UnsatisfiedLinkError if it cannot be loaded
     * @throws PhotosLoadException if this process has loaded another copy, or one through another
     *     class loader
     */
    public PhotosService(Path library) {
        NativeLoader.load(library);
    }

    // ---- Access and browsing ----

    /**
     * Asks for access to the library, reading and writing. May ask the user, for as long as the
     * user takes; must not be called from a thread that the photo library needs to answer.
     *
     * @return 1 for full access, 2 for limited access (only the assets that the user picked), 0
     *     for none (denied, restricted or undecided)
     */
    public native int nativeAuthorize();

    /**
     * One page of the whole library, newest first. Mind the order of the parameters.
     *
     * @param count how many assets at most; a negative count is 0
     * @param offset how many newer assets to skip; a negative offset is 0
     * @return a JSON array of objects with {@code id}, {@code filename}, {@code isVideo},
     *     {@code width} and {@code height} (pixels, as displayed), {@code createdMs} (milliseconds
     *     since 1970-01-01T00:00:00Z, 0 if unknown) and {@code isFavorite}; {@code []} when there
     *     is nothing on the page or no access
     */
    public native String nativeListAssets(int count, int offset);

    /**
     * The number of assets that {@link #nativeListAssets} pages through.
     *
     * @return the number, cut to its low 32 bits
     */
    public native int nativeAssetCount();

    /**
     * The albums and folders directly inside a folder, or at the top level, followed there by the
     * smart albums that hold at least one asset.
     *
     * @param parentFolderId the folder; null, empty or unreadable text is the top level
     * @return a JSON array of objects with {@code id}, {@code title}, {@code kind} ({@code album},
     *     {@code folder} or {@code smart}) and {@code count} (assets, or a folder's direct
     *     children); {@code []} for an unknown folder
     */
    public native String nativeListAlbums(String parentFolderId);

    /**
     * One page of an album: user albums newest first, smart albums in the library's order. Mind
     * the order of the parameters.
     *
     * @param albumId an album or smart album
     * @param count as for {@link #nativeListAssets}
     * @param offset as for {@link #nativeListAssets}
     * @return a JSON array of objects as from {@link #nativeListAssets}, each with
     *     {@code isHidden} as well; {@code []} for a null, unreadable or unknown album and for a
     *     folder
     */
    public native String nativeListAlbumAssets(String albumId, int count, int offset);

    /**
     * The folder that directly holds an album or folder.
     *
     * @param collectionId an album or folder
     * @return the folder's identifier; empty at the top level, and for a null, unreadable or
     *     unknown collection
     */
    public native String nativeParentCollection(String collectionId);

    /**
     * The title of an album or folder as it is now.
     *
     * @param collectionId an album, smart album or folder
     * @return the title, empty if it has none; null for a null, unreadable or unknown collection
     */
    public native String nativeCollectionTitle(String collectionId);

    /**
     * Whether an album holds an asset.
     *
     * @param albumId an album or smart album
     * @param assetId an asset
     * @return 1 if it does, 0 if not (also for an unknown asset), -1 if an argument is null or
     *     unreadable or the album is unknown
     */
    public native int nativeAlbumContainsAsset(String albumId, String assetId);

    // ---- Pictures and files ----

    /**
     * A small picture of an asset that covers a size, its aspect ratio kept; edits are included.
     * It may be larger than asked for. A picture that lies in the cloud is downloaded meanwhile.
     *
     * @param assetId the asset; <b>must not be null</b>: it is not tested, and null takes the
     *     JVM down
     * @param width in pixels
     * @param height in pixels
     * @return a complete JPEG file; null when the asset is unknown or has no picture, which is not
     *     logged
     */
    public native byte[] nativeRequestThumbnail(String assetId, int width, int height);

    /**
     * Copies an asset's file as it is now, edits included, out of the library. Directories that
     * are missing on the way are made, and whatever stands at the destination is removed first,
     * a directory with its contents.
     *
     * @param assetId the asset; <b>must not be null</b>: it is not tested, and null takes the
     *     JVM down
     * @param destinationPath the file to write; <b>must not be null</b>, likewise
     * @param exportRequestId chosen by the caller, for {@link #nativeCancelExport}; unique among
     *     the exports in flight
     * @return 0 when the file is complete; -1 for an unknown asset, -2 if it has no file that can
     *     be exported; -3 if the destination could not be opened or the transfer failed, -4 if it
     *     was cancelled. After -3 and -4 what was written stays.
     */
    public native int nativeExportToFile(
            String assetId, String destinationPath, int exportRequestId);

    /**
     * Cancels an export that another thread waits for. Without such an export, or before it has
     * started to transfer, nothing happens.
     *
     * @param exportRequestId as given to {@link #nativeExportToFile}
     */
    public native void nativeCancelExport(int exportRequestId);

    /**
     * Copies an asset's unedited picture to a file, for editing. The directory must exist; a file
     * that stands there is replaced.
     *
     * @param assetId the asset
     * @param destinationPath the file to write
     * @return 0 when done; -1 if an argument is null or unreadable or the asset unknown, -2 if it
     *     cannot be edited (a video), -3 if the copy failed
     */
    public native int nativeContentEditingImage(String assetId, String destinationPath);

    /**
     * Makes a rendered picture the current version of an asset, as an edit that can be reverted.
     * After any result but 0 the asset is as it was.
     *
     * @param assetId the asset
     * @param renderedPath a JPEG file, taken as it is
     * @return 0 when done; -1 if an argument is null or unreadable or the asset unknown, -2 if it
     *     cannot be edited, -3 if the file could not be read or handed over, -4 if the change
     *     failed
     */
    public native int nativeApplyEdit(String assetId, String renderedPath);

    // ---- Changes to assets ----

    /**
     * Adds files as new assets. Each is copied in a change of its own, one after the other; the
     * files stay where they are.
     *
     * @param paths file paths. Elements that are null or hold a character that cannot cross (see
     *     above) are dropped, <b>and the results after them move up</b>.
     * @return one element for each path that was not dropped: the new asset's identifier, or null
     *     if that file could not be imported. Null if there is no path to import.
     */
    public native String[] nativeImportAssets(String[] paths);

    /**
     * Deletes assets, all or none. The photo library may ask the user.
     *
     * @param assetIds the assets; unknown ones are ignored as long as one is known
     * @return how many were deleted; -1 if there was nothing to delete, -2 if the user refused, -3
     *     if the change failed
     */
    public native int nativeDeleteAssets(String[] assetIds);

    /**
     * Sets or clears the favourite mark of assets, all or none.
     *
     * @param assetIds the assets; unknown ones are ignored as long as one is known
     * @param favorite the mark they are to have
     * @return how many were found and written, whatever their mark was before; -1 if none, -2 if
     *     the change failed
     */
    public native int nativeSetFavorite(String[] assetIds, boolean favorite);

    /**
     * Sets or clears the hidden mark of assets, all or none. Hidden assets are left out of the
     * listings but stay in their albums.
     *
     * @param assetIds the assets; unknown ones are ignored as long as one is known
     * @param hidden the mark they are to have
     * @return as for {@link #nativeSetFavorite}
     */
    public native int nativeSetHidden(String[] assetIds, boolean hidden);

    /**
     * Gives an asset another one's place: its favourite mark, if it has one, and its albums.
     * Nothing is taken from the target, and each album is a change of its own.
     *
     * @param sourceAssetId the asset to copy from
     * @param targetAssetId the asset to copy to
     * @return the number of albums that took the target, 0 or more; -1 if an argument is null or
     *     unreadable or an asset unknown
     */
    public native int nativeCopyAssetAttributes(String sourceAssetId, String targetAssetId);

    /**
     * Adds assets to a user album, all or none.
     *
     * @param albumId the album
     * @param assetIds the assets; unknown ones are ignored as long as one is known
     * @return how many were found and added, those included that the album held already; -1 if the
     *     album or all of the assets are unknown, -2 for a smart album or if the change failed
     */
    public native int nativeAddAssetsToAlbum(String albumId, String[] assetIds);

    /**
     * Takes assets out of a user album, all or none. They stay in the library.
     *
     * @param albumId the album
     * @param assetIds the assets; unknown ones are ignored as long as one is known
     * @return as for {@link #nativeAddAssetsToAlbum}
     */
    public native int nativeRemoveAssetsFromAlbum(String albumId, String[] assetIds);

    // ---- Albums and folders ----

    /**
     * Makes an empty album. Titles need not be unique and are taken as they are.
     *
     * @param title not empty
     * @param parentFolderId the folder to put it into; null, empty or unreadable text is the top
     *     level
     * @return the new album's identifier; null if the title is missing, there is no such folder,
     *     or the change failed. An album that could not be put into its folder stays at the top
     *     level.
     */
    public native String nativeCreateAlbum(String title, String parentFolderId);

    /**
     * Makes an empty folder, as {@link #nativeCreateAlbum} makes an album.
     *
     * @param title not empty
     * @param parentFolderId the folder to put it into; null, empty or unreadable text is the top
     *     level
     * @return the new folder's identifier; null as for {@link #nativeCreateAlbum}
     */
    public native String nativeCreateFolder(String title, String parentFolderId);

    /**
     * Renames an album or a folder.
     *
     * @param collectionId the album or folder
     * @param newTitle not empty
     * @return 0 when done; -1 if an argument is null, unreadable or empty or the collection
     *     unknown, -2 for a smart album or if the change failed
     */
    public native int nativeRenameAlbum(String collectionId, String newTitle);

    /**
     * Deletes an album or a folder; the assets inside stay in the library.
     *
     * @param collectionId the album or folder
     * @return 0 when done; -1 if the argument is null or unreadable or the collection unknown, -2
     *     for a smart album or if the change failed
     */
    public native int nativeDeleteAlbum(String collectionId);

    /**
     * Copies an album, or a folder with everything in it, beside the original under a new title.
     * The assets are shared, not copied.
     *
     * @param collectionId the album or folder
     * @return the copy's identifier; null for an unknown collection or a smart album, or if the
     *     copy could not be made. Parts of a folder that could not be copied are left out.
     */
    public native String nativeDuplicateCollection(String collectionId);
}
