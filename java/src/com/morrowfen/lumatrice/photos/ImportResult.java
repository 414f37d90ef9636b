package com.morrowfen.lumatrice.photos;

import java.nio.file.Path;
import java.util.Optional;

/**
 * What became of one file that was to be imported.
 *
 * @param file the file, as the caller named it
 * @param assetId the new asset's identifier; empty if the file was not imported
 * @param problem why it was not imported, a sentence; empty if it was
 */
public record ImportResult(Path file, Optional<String> assetId, Optional<String> problem) {
    /**
     * Whether the file is in the library now.
     *
     * @return true if there is a new asset
     */
    public boolean isImported() {
        return assetId.isPresent();
    }

    static ImportResult of(Path file, String idOrNull) {
        if (idOrNull != null) {
            return new ImportResult(file, Optional.of(idOrNull), Optional.empty());
        }
        return failed(file, "The library did not take the file: it cannot be read, or the change"
                + " failed. The diagnostic log says which.");
    }

    static ImportResult failed(Path file, String problem) {
        return new ImportResult(file, Optional.empty(), Optional.of(problem));
    }
}
