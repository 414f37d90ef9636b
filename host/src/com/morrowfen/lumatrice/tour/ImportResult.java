package com.morrowfen.lumatrice.tour;

import java.nio.file.Path;
import java.time.Duration;
import java.util.List;

/** What became of an import. */
record ImportResult(int imported, List<Failure> failures, Duration time) {
    /** A file that is not in the library, and why. */
    record Failure(Path file, String reason) {}
}
