package com.morrowfen.lumatrice.photos;

/**
 * An album, a smart album or a folder, as it was when it was listed.
 *
 * @param id the local identifier, by which every method names it
 * @param title the title to show
 * @param kind what it is
 * @param count how many assets it holds, or for a folder how many albums and folders directly
 */
public record Collection(String id, String title, Kind kind, long count) {
    /** What a collection is. */
    public enum Kind {
        /** Holds the assets that somebody put into it. */
        ALBUM,
        /** Holds albums and folders. */
        FOLDER,
        /** Holds the assets that the library picks; it can be read only. */
        SMART
    }
}
