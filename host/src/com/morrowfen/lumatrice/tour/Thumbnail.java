package com.morrowfen.lumatrice.tour;

import java.nio.file.Path;

/**
 * An asset with its thumbnail.
 *
 * @param file the JPEG file; null if the asset has no picture
 */
record Thumbnail(Asset asset, Path file) {
    boolean hasPicture() {
        return file != null;
    }
}
