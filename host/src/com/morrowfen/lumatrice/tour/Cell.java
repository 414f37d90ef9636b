package com.morrowfen.lumatrice.tour;

import com.morrowfen.lumatrice.photos.Asset;
import java.time.ZoneId;
import java.time.format.DateTimeFormatter;
import java.util.List;
import java.util.Locale;

/** What both contact sheets show of an asset. */
final class Cell {
    /** The size of the picture, in pixels. */
    static final int WIDTH = 320;

    static final int HEIGHT = 240;

    private static final DateTimeFormatter DATE =
            DateTimeFormatter.ofPattern("d MMM yyyy", Locale.ENGLISH)
                    .withZone(ZoneId.systemDefault());

    private Cell() {}

    /** Date and size. */
    static String details(Asset asset) {
        String date = asset.created().map(DATE::format).orElse("no date");
        return date + " · " + asset.width() + " × " + asset.height();
    }

    /** How many of each kind. */
    static String totals(List<Tile> tiles) {
        long videos = tiles.stream().filter(tile -> tile.asset().isVideo()).count();
        long photos = tiles.size() - videos;
        if (videos == 0) {
            return counted(photos, "photo");
        }
        return (photos == 0 ? "" : counted(photos, "photo") + ", ") + counted(videos, "video");
    }

    static String counted(long number, String noun) {
        return String.format(Locale.ROOT, "%,d %s%s", number, noun, number == 1 ? "" : "s");
    }
}
