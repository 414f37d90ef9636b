package com.morrowfen.lumatrice.tour;

import com.morrowfen.lumatrice.photos.Asset;
import com.morrowfen.lumatrice.photos.PhotoLibrary;
import com.morrowfen.lumatrice.photos.Thumbnail;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.util.Optional;

/**
 * An asset on the contact sheet.
 *
 * @param name what stands below it
 * @param file its thumbnail, a JPEG file; null if it has no picture
 */
record Tile(Asset asset, String name, Path file) {
    boolean hasPicture() {
        return file != null;
    }

    /** Has the thumbnail rendered into the file. */
    static Tile render(PhotoLibrary library, Asset asset, String name, Path file)
            throws IOException {
        Optional<Thumbnail> picture = library.thumbnail(asset.id(), Cell.WIDTH, Cell.HEIGHT);
        if (picture.isEmpty()) {
            return new Tile(asset, name, null);
        }
        Files.copy(picture.get().newInputStream(), file, StandardCopyOption.REPLACE_EXISTING);
        return new Tile(asset, name, file);
    }
}
