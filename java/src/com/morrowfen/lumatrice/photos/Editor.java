package com.morrowfen.lumatrice.photos;

import java.io.IOException;
import java.nio.file.Path;

/** The middle of an edit: makes the new picture from the old one. */
@FunctionalInterface
public interface Editor {
    /**
     * Reads the unedited picture and writes the edited one.
     *
     * @param original the asset's unedited picture, in the format in which it was imported; a copy
     *     that goes when the edit ends
     * @param rendered where to write the new picture, as a JPEG file
     * @throws IOException if it cannot; the asset stays as it is
     */
    void edit(Path original, Path rendered) throws IOException;
}
