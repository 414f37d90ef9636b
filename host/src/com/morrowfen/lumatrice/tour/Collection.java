package com.morrowfen.lumatrice.tour;

import java.util.Locale;

/**
 * An album, smart album or folder. The fields are named as in the library's JSON.
 *
 * @param kind album, folder or smart
 * @param count assets, or what a folder directly holds
 */
record Collection(String id, String title, String kind, long count) {
    boolean isFolder() {
        return kind.equals("folder");
    }

    boolean isUserAlbum() {
        return kind.equals("album");
    }

    /** On one line, with kind and count. */
    String description() {
        return Printable.line(title) + switch (kind) {
            case "folder" -> String.format(Locale.ROOT, " (folder, %,d inside)", count);
            case "smart" -> String.format(Locale.ROOT, " (smart album, %s)", assets());
            default -> String.format(Locale.ROOT, " (%s, %s)", kind, assets());
        };
    }

    private String assets() {
        return Cell.counted(count, "asset");
    }
}
