package com.morrowfen.lumatrice.tour;

import com.morrowfen.lumatrice.photos.ImportResult;
import java.time.Duration;
import java.util.List;
import java.util.Locale;

/** The tour in figures. */
final class Figures {
    private Figures() {}

    static String closingLine(List<ImportResult> results, Duration importTime, List<Tile> tiles,
            Duration renderTime) {
        long imported = results.stream().filter(ImportResult::isImported).count();
        long rendered = tiles.stream().filter(Tile::hasPicture).count();
        return String.format(Locale.ROOT,
                "%,d files: %,d imported, %,d failed in %.1f s; %,d thumbnails in %.1f s, "
                        + "%.0f a second",
                results.size(), imported, results.size() - imported, seconds(importTime), rendered,
                seconds(renderTime), renderTime.isZero() ? 0 : rendered / seconds(renderTime));
    }

    private static double seconds(Duration duration) {
        return duration.toNanos() / 1e9;
    }
}
