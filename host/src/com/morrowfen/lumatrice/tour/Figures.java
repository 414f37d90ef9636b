package com.morrowfen.lumatrice.tour;

import java.time.Duration;
import java.util.List;
import java.util.Locale;

/** The tour in figures. */
final class Figures {
    private Figures() {}

    static String closingLine(
            int files, ImportResult result, List<Thumbnail> thumbnails, Duration renderTime) {
        long rendered = thumbnails.stream().filter(Thumbnail::hasPicture).count();
        return String.format(Locale.ROOT,
                "%,d files: %,d imported, %,d failed in %.1f s; %,d thumbnails in %.1f s, "
                        + "%.0f a second",
                files, result.imported(), result.failures().size(), seconds(result.time()),
                rendered, seconds(renderTime),
                renderTime.isZero() ? 0 : rendered / seconds(renderTime));
    }

    private static double seconds(Duration duration) {
        return duration.toNanos() / 1e9;
    }
}
