package com.morrowfen.lumatrice.photos;

import static com.morrowfen.lumatrice.photos.Arguments.filledText;
import static com.morrowfen.lumatrice.photos.Arguments.newFile;
import static com.morrowfen.lumatrice.photos.Arguments.path;
import static com.morrowfen.lumatrice.photos.Arguments.text;
import static com.morrowfen.lumatrice.photos.Arguments.texts;
import static com.morrowfen.lumatrice.photos.ResultCodes.made;
import static com.morrowfen.lumatrice.photos.ResultCodes.successful;

import com.morrowfen.lumatrice.service.PhotosService;
import java.io.IOException;
import java.nio.file.Path;
import java.util.List;
import java.util.Objects;
import java.util.Optional;
import java.util.concurrent.Executor;
import java.util.stream.Stream;

/**
 * The user's photo library, with types: records for what is listed, exceptions for what fails.
 *
 * <p>A host calls {@link #open} and keeps what it gets; a host with a {@link PhotosService} of its
 * own calls {@link #over}. Opening loads the native library, once in a process, and asks nobody
 * for anything: the user may be asked by {@link #authorize}, which comes next.
 *
 * <p>Every method may be called from any thread, several at once, and blocks its caller until the
 * photo library has answered; keep them off a user interface's thread. There is nothing to close,
 * and a second object is the same library.
 *
 * <p><b>Arguments.</b> None may be null ({@link NullPointerException}, before the native library
 * hears of it). Text that cannot cross into it (U+0000, and characters outside the Basic
 * Multilingual Plane such as emoji) is refused with an {@link IllegalArgumentException}, because
 * the native library would take it for missing. So is a file to write where a folder stands.
 *
 * <p><b>Failures</b> are {@link PhotosException}s, with the result code and what it means. An
 * unknown identifier is one; so is access that the user has denied, as then nothing is found.
 */
public final class PhotoLibrary {
    /** How many assets the streams fetch at once. */
    public static final int PAGE_SIZE = 200;

    private final PhotosService photos;
    private final Executor exports;

    private PhotoLibrary(PhotosService photos, Executor exports) {
        this.photos = Objects.requireNonNull(photos, "photos");
        this.exports = Objects.requireNonNull(exports, "exports");
    }

    /**
     * Opens the library, with the native library that {@link PhotosService#PhotosService()} finds.
     *
     * @return the library
     * @throws com.morrowfen.lumatrice.service.PhotosLoadException if it cannot be loaded
     */
    public static PhotoLibrary open() {
        return over(new PhotosService());
    }

    /**
     * Gives the library types over a service that the caller has made.
     *
     * @param photos the service
     * @return the library
     */
    public static PhotoLibrary over(PhotosService photos) {
        return new PhotoLibrary(photos, new ExportThreads());
    }

    /**
     * The same library with another choice of threads for exports. The usual ones are platform
     * threads, a daemon for each export. Virtual threads serve badly: an export blocks in native
     * code, where it keeps the platform thread under it, and as many exports as there are
     * processors let no other virtual thread of the process go on.
     *
     * @param executor runs each export to its end, and has its thread blocked meanwhile
     * @return the library
     */
    public PhotoLibrary withExportsOn(Executor executor) {
        return new PhotoLibrary(photos, executor);
    }

    /**
     * The native methods underneath.
     *
     * @return the service
     */
    public PhotosService service() {
        return photos;
    }

    // ---- Access and browsing ----

    /**
     * Asks for access to the library, reading and writing; may ask the user.
     *
     * @return what the user allows
     */
    public Access authorize() {
        return Access.of(photos.nativeAuthorize());
    }

    /**
     * How many assets the library lists.
     *
     * @return the number
     */
    public long assetCount() {
        return Integer.toUnsignedLong(photos.nativeAssetCount());
    }

    /**
     * One page of the whole library, newest first.
     *
     * @param offset how many newer assets to skip, 0 or more
     * @param limit how many assets at most, 0 or more
     * @return the page; fewer assets may come than asked for, none at the end
     */
    public Page page(int offset, int limit) {
        checkPage(offset, limit);
        String json = photos.nativeListAssets(limit, offset);
        return new Page(offset, limit, Listings.assets("nativeListAssets", json));
    }

    /**
     * One page of an album: user albums newest first, smart albums in the library's order.
     *
     * @param albumId an album or smart album; an unknown one is empty
     * @param offset how many assets to skip, 0 or more
     * @param limit how many assets at most, 0 or more
     * @return the page
     */
    public Page albumPage(String albumId, int offset, int limit) {
        text("albumId", albumId);
        checkPage(offset, limit);
        String json = photos.nativeListAlbumAssets(albumId, limit, offset);
        return new Page(offset, limit, Listings.assets("nativeListAlbumAssets", json));
    }

    /**
     * The whole library in pages, newest first, each fetched when the stream asks for it. Not a
     * snapshot: what comes or goes between two pages moves the rest, so that an asset can come
     * twice, or not at all.
     *
     * @param size how many assets a page holds, 1 or more
     * @return the pages up to the last one that holds an asset
     */
    public Stream<Page> pages(int size) {
        return Pages.stream(size, this::page);
    }

    /**
     * An album in pages, like {@link #pages}.
     *
     * @param albumId an album or smart album; an unknown one is empty
     * @param size how many assets a page holds, 1 or more
     * @return the pages up to the last one that holds an asset
     */
    public Stream<Page> albumPages(String albumId, int size) {
        text("albumId", albumId);
        return Pages.stream(size, (offset, limit) -> albumPage(albumId, offset, limit));
    }

    /**
     * The whole library, newest first, fetched by and by as {@link #pages} says.
     *
     * @return the assets
     */
    public Stream<Asset> assets() {
        return pages(PAGE_SIZE).flatMap(page -> page.assets().stream());
    }

    /**
     * An album, fetched by and by as {@link #pages} says.
     *
     * @param albumId an album or smart album; an unknown one is empty
     * @return the assets
     */
    public Stream<Asset> albumAssets(String albumId) {
        return albumPages(albumId, PAGE_SIZE).flatMap(page -> page.assets().stream());
    }

    /**
     * The albums and folders at the top level, and after them the smart albums that hold an asset.
     *
     * @return the collections; cannot be changed
     */
    public List<Collection> collections() {
        return collectionsOf(null);
    }

    /**
     * The albums and folders directly inside a folder.
     *
     * @param folderId the folder; an unknown one is empty
     * @return the collections; cannot be changed
     */
    public List<Collection> collections(String folderId) {
        return collectionsOf(filledText("folderId", folderId));
    }

    /**
     * The folder that directly holds an album or folder.
     *
     * @param collectionId an album or folder
     * @return the folder's identifier; empty at the top level and for an unknown collection
     */
    public Optional<String> parentOf(String collectionId) {
        String parent = photos.nativeParentCollection(text("collectionId", collectionId));
        return Optional.ofNullable(parent).filter(id -> !id.isEmpty());
    }

    /**
     * The title of a collection as it is now.
     *
     * @param collectionId an album, smart album or folder
     * @return the title, which may be empty text; empty for an unknown collection
     */
    public Optional<String> titleOf(String collectionId) {
        return Optional.ofNullable(
                photos.nativeCollectionTitle(text("collectionId", collectionId)));
    }

    /**
     * Whether an album holds an asset.
     *
     * @param albumId an album or smart album
     * @param assetId an asset; an unknown one is in no album
     * @return true if it does
     * @throws PhotosException if the album is unknown
     */
    public boolean albumContains(String albumId, String assetId) {
        text("albumId", albumId);
        text("assetId", assetId);
        return successful("nativeAlbumContainsAsset",
                photos.nativeAlbumContainsAsset(albumId, assetId)) == 1;
    }

    // ---- Pictures and files ----

    /**
     * A small picture that covers a size, its aspect ratio kept; edits are included.
     *
     * @param assetId the asset
     * @param width in pixels, 1 or more
     * @param height in pixels, 1 or more
     * @return the picture; empty if the asset is unknown or has none
     */
    public Optional<Thumbnail> thumbnail(String assetId, int width, int height) {
        text("assetId", assetId);
        if (width < 1 || height < 1) {
            throw new IllegalArgumentException("no size: " + width + " x " + height);
        }
        return Optional.ofNullable(photos.nativeRequestThumbnail(assetId, width, height))
                .map(Thumbnail::new);
    }

    /**
     * Starts to copy an asset's file as it is now, edits included, out of the library. Missing
     * folders on the way are made.
     *
     * @param assetId the asset
     * @param destination the file to write; one that stands there is replaced in the end
     * @return the export, which goes on by itself
     */
    public Export export(String assetId, Path destination) {
        Objects.requireNonNull(destination, "destination");
        return Export.start(photos, assetId, destination, exports);
    }

    /**
     * Copies an asset's unedited picture to a file, for editing.
     *
     * @param assetId the asset
     * @param destination the file to write, in a folder that exists; one that stands there is
     *     replaced
     * @throws PhotosException if the asset is unknown or a video, or the copy failed
     */
    public void copyForEditing(String assetId, Path destination) {
        text("assetId", assetId);
        successful("nativeContentEditingImage", photos.nativeContentEditingImage(
                assetId, newFile("destination", destination)));
    }

    /**
     * Makes a rendered picture the current version of an asset, as an edit that can be reverted.
     *
     * @param assetId the asset
     * @param rendered a JPEG file, taken as it is
     * @throws PhotosException if it could not be done; the asset is as it was
     */
    public void applyEdit(String assetId, Path rendered) {
        text("assetId", assetId);
        successful("nativeApplyEdit",
                photos.nativeApplyEdit(assetId, path("rendered", rendered)));
    }

    /**
     * A whole edit: hands the unedited picture to an editor, and makes what it rendered the
     * current version. The files in between lie in a folder that is gone afterwards.
     *
     * @param assetId the asset
     * @param editor renders the new picture
     * @throws IOException from the editor, or if there is no room for temporary files
     * @throws PhotosException if the asset cannot be edited; it is as it was
     */
    public void edit(String assetId, Editor editor) throws IOException {
        text("assetId", assetId);
        Objects.requireNonNull(editor, "editor");
        EditFolder.with(folder -> {
            Path original = folder.resolve("original");
            Path rendered = folder.resolve("rendered.jpg");
            copyForEditing(assetId, original);
            editor.edit(original, rendered);
            applyEdit(assetId, rendered);
        });
    }

    // ---- Changes to assets ----

    /**
     * Adds files as new assets, each in a change of its own; the files stay where they are.
     *
     * @param files the files
     * @return what became of each, in the same order
     */
    public List<ImportResult> importFiles(List<Path> files) {
        return Imports.run(photos, files);
    }

    /**
     * Adds one file as a new asset; the file stays where it is.
     *
     * @param file the file
     * @return what became of it
     */
    public ImportResult importFile(Path file) {
        return importFiles(List.of(file)).get(0);
    }

    /**
     * Deletes assets, all or none. The photo library may ask the user.
     *
     * @param assetIds the assets; unknown ones are ignored as long as one is known
     * @return how many were deleted; 0 for an empty list
     * @throws PhotosException with code -2 if the user refused, or if none is known or the change
     *     failed
     */
    public int deleteAssets(List<String> assetIds) {
        String[] ids = texts("assetIds", assetIds);
        return ids.length == 0 ? 0
                : successful("nativeDeleteAssets", photos.nativeDeleteAssets(ids));
    }

    /**
     * Sets or clears the favourite mark of assets, all or none.
     *
     * @param assetIds the assets; unknown ones are ignored as long as one is known
     * @param favorite the mark they are to have
     * @return how many were found and written; 0 for an empty list
     * @throws PhotosException if none is known or the change failed
     */
    public int setFavorite(List<String> assetIds, boolean favorite) {
        String[] ids = texts("assetIds", assetIds);
        return ids.length == 0 ? 0
                : successful("nativeSetFavorite", photos.nativeSetFavorite(ids, favorite));
    }

    /**
     * Sets or clears the hidden mark of assets, all or none. Hidden assets are left out of the
     * listings but stay in their albums.
     *
     * @param assetIds the assets; unknown ones are ignored as long as one is known
     * @param hidden the mark they are to have
     * @return how many were found and written; 0 for an empty list
     * @throws PhotosException if none is known or the change failed
     */
    public int setHidden(List<String> assetIds, boolean hidden) {
        String[] ids = texts("assetIds", assetIds);
        return ids.length == 0 ? 0
                : successful("nativeSetHidden", photos.nativeSetHidden(ids, hidden));
    }

    /**
     * Gives an asset another one's place: its favourite mark, if it has one, and its albums.
     * Nothing is taken from the target, and each album is a change of its own.
     *
     * @param sourceAssetId the asset to copy from
     * @param targetAssetId the asset to copy to
     * @return the number of albums that took the target
     * @throws PhotosException if one of the two is unknown
     */
    public int copyAttributes(String sourceAssetId, String targetAssetId) {
        text("sourceAssetId", sourceAssetId);
        text("targetAssetId", targetAssetId);
        return successful("nativeCopyAssetAttributes",
                photos.nativeCopyAssetAttributes(sourceAssetId, targetAssetId));
    }

    /**
     * Adds assets to a user album, all or none.
     *
     * @param albumId the album
     * @param assetIds the assets; unknown ones are ignored as long as one is known
     * @return how many were found, those included that the album held already; 0 for an empty list
     * @throws PhotosException if the album or all assets are unknown, or it is a smart album, or
     *     the change failed
     */
    public int addToAlbum(String albumId, List<String> assetIds) {
        text("albumId", albumId);
        String[] ids = texts("assetIds", assetIds);
        return ids.length == 0 ? 0
                : successful("nativeAddAssetsToAlbum", photos.nativeAddAssetsToAlbum(albumId, ids));
    }

    /**
     * Takes assets out of a user album, all or none. They stay in the library.
     *
     * @param albumId the album
     * @param assetIds the assets; unknown ones are ignored as long as one is known
     * @return how many were found; 0 for an empty list
     * @throws PhotosException as from {@link #addToAlbum}
     */
    public int removeFromAlbum(String albumId, List<String> assetIds) {
        text("albumId", albumId);
        String[] ids = texts("assetIds", assetIds);
        return ids.length == 0 ? 0 : successful("nativeRemoveAssetsFromAlbum",
                photos.nativeRemoveAssetsFromAlbum(albumId, ids));
    }

    // ---- Albums and folders ----

    /**
     * Makes an empty album at the top level. Titles need not be unique.
     *
     * @param title not empty
     * @return the new album's identifier
     * @throws PhotosException if it could not be made
     */
    public String createAlbum(String title) {
        return made("nativeCreateAlbum",
                photos.nativeCreateAlbum(filledText("title", title), null));
    }

    /**
     * Makes an empty album in a folder.
     *
     * @param title not empty
     * @param parentFolderId the folder
     * @return the new album's identifier
     * @throws PhotosException if the folder is unknown or the change failed; an album that could
     *     not be put into its folder stays at the top level
     */
    public String createAlbum(String title, String parentFolderId) {
        return made("nativeCreateAlbum", photos.nativeCreateAlbum(filledText("title", title),
                filledText("parentFolderId", parentFolderId)));
    }

    /**
     * Makes an empty folder at the top level. Titles need not be unique.
     *
     * @param title not empty
     * @return the new folder's identifier
     * @throws PhotosException if it could not be made
     */
    public String createFolder(String title) {
        return made("nativeCreateFolder",
                photos.nativeCreateFolder(filledText("title", title), null));
    }

    /**
     * Makes an empty folder in a folder.
     *
     * @param title not empty
     * @param parentFolderId the folder
     * @return the new folder's identifier
     * @throws PhotosException as from {@link #createAlbum(String, String)}
     */
    public String createFolder(String title, String parentFolderId) {
        return made("nativeCreateFolder", photos.nativeCreateFolder(filledText("title", title),
                filledText("parentFolderId", parentFolderId)));
    }

    /**
     * Renames an album or a folder.
     *
     * @param collectionId the album or folder
     * @param newTitle not empty
     * @throws PhotosException if it is unknown or a smart album, or the change failed
     */
    public void rename(String collectionId, String newTitle) {
        text("collectionId", collectionId);
        successful("nativeRenameAlbum",
                photos.nativeRenameAlbum(collectionId, filledText("newTitle", newTitle)));
    }

    /**
     * Deletes an album or a folder; the assets inside stay in the library.
     *
     * @param collectionId the album or folder
     * @throws PhotosException if it is unknown or a smart album, or the change failed
     */
    public void deleteCollection(String collectionId) {
        successful("nativeDeleteAlbum",
                photos.nativeDeleteAlbum(text("collectionId", collectionId)));
    }

    /**
     * Copies an album, or a folder with everything in it, beside the original under a new title.
     * The assets are shared, not copied. Parts of a folder that cannot be copied are left out.
     *
     * @param collectionId the album or folder
     * @return the copy's identifier
     * @throws PhotosException if it is unknown or a smart album, or the copy could not be made
     */
    public String duplicate(String collectionId) {
        return made("nativeDuplicateCollection",
                photos.nativeDuplicateCollection(text("collectionId", collectionId)));
    }

    private List<Collection> collectionsOf(String folderIdOrNull) {
        return Listings.collections("nativeListAlbums", photos.nativeListAlbums(folderIdOrNull));
    }

    private static void checkPage(int offset, int limit) {
        if (offset < 0 || limit < 0) {
            throw new IllegalArgumentException("no page: " + limit + " from " + offset);
        }
    }
}
