package com.morrowfen.lumatrice.tour;

/** File names may hold line breaks and escape sequences; a terminal must not act on them. */
final class Printable {
    private Printable() {}

    /** The text on one line, with a blank for every control character. */
    static String line(String text) {
        return text.replaceAll("[\\p{Cntrl}\\u0080-\\u009F\\u2028\\u2029]", " ");
    }
}
