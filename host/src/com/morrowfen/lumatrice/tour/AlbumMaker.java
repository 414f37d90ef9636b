package com.morrowfen.lumatrice.tour;

import com.morrowfen.lumatrice.photos.PhotoLibrary;
import com.morrowfen.lumatrice.photos.PhotosException;
import java.util.Optional;

/**
 * Makes albums and folders after the folders of the disk. One with sub-folders becomes a folder,
 * and its own pictures an album of the same title inside it; any other becomes an album.
 */
final class AlbumMaker {
    private final PhotoLibrary library;

    AlbumMaker(PhotoLibrary library) {
        this.library = library;
    }

    /** Below the folder; the pictures in the folder itself get no album. */
    void makeAll(PictureFolder folder) {
        makeAll(folder, Optional.empty());
    }

    private void makeAll(PictureFolder folder, Optional<String> parentId) {
        folder.subfolders.forEach((title, subfolder) -> {
            try {
                make(title, subfolder, parentId);
            } catch (PhotosException | IllegalArgumentException problem) {
                System.out.println("  " + Printable.line(
                        "the album or folder " + title + ": " + problem.getMessage()));
            }
        });
    }

    private void make(String title, PictureFolder pictures, Optional<String> parentId) {
        if (pictures.subfolders.isEmpty()) {
            makeAlbum(title, pictures, parentId);
            return;
        }
        String folderId = parentId.map(parent -> library.createFolder(title, parent))
                .orElseGet(() -> library.createFolder(title));
        if (!pictures.assetIds.isEmpty()) {
            makeAlbum(title, pictures, Optional.of(folderId));
        }
        makeAll(pictures, Optional.of(folderId));
    }

    private void makeAlbum(String title, PictureFolder pictures, Optional<String> parentId) {
        String albumId = parentId.map(parent -> library.createAlbum(title, parent))
                .orElseGet(() -> library.createAlbum(title));
        library.addToAlbum(albumId, pictures.assetIds);
    }
}
