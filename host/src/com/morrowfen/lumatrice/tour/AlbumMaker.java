package com.morrowfen.lumatrice.tour;

import com.morrowfen.lumatrice.service.PhotosService;
import java.util.List;

/**
 * Makes albums and folders after the folders of the disk. One with sub-folders becomes a folder,
 * and its own pictures an album of the same title inside it; any other becomes an album.
 */
final class AlbumMaker {
    private final PhotosService photos;

    AlbumMaker(PhotosService photos) {
        this.photos = photos;
    }

    /** Below the folder; the pictures in the folder itself get no album. */
    void makeAll(PictureFolder folder) {
        makeAll(folder, null);
    }

    private void makeAll(PictureFolder folder, String parentId) {
        folder.subfolders.forEach((title, subfolder) -> make(title, subfolder, parentId));
    }

    private void make(String title, PictureFolder pictures, String parentId) {
        if (pictures.subfolders.isEmpty()) {
            makeAlbum(title, pictures.assetIds, parentId);
            return;
        }
        String folderId = photos.nativeCreateFolder(title, parentId);
        if (folderId == null) {
            report("the folder " + title + " could not be made");
            return;
        }
        if (!pictures.assetIds.isEmpty()) {
            makeAlbum(title, pictures.assetIds, folderId);
        }
        makeAll(pictures, folderId);
    }

    private void makeAlbum(String title, List<String> assetIds, String parentId) {
        String albumId = photos.nativeCreateAlbum(title, parentId);
        if (albumId == null) {
            report("the album " + title + " could not be made");
            return;
        }
        int added = photos.nativeAddAssetsToAlbum(albumId, assetIds.toArray(String[]::new));
        if (added != assetIds.size()) {
            report("the album " + title + " could not be filled: " + added);
        }
    }

    private static void report(String failure) {
        System.out.println("  " + Printable.line(failure));
    }
}
