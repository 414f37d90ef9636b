package com.morrowfen.lumatrice.tour;

import java.nio.file.Path;
import java.time.Duration;
import java.util.List;
import java.util.SortedMap;

/**
 * What became of an import.
 *
 * @param assetIds of the files that are in the library now
 */
record ImportResult(SortedMap<Path, String> assetIds, List<Failure> failures, Duration time) {
    /** A file that is not in the library, and why. */
    record Failure(Path file, String reason) {}

    int imported() {
        return assetIds.size();
    }
}
