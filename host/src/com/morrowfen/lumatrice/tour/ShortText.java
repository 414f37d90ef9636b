package com.morrowfen.lumatrice.tour;

import java.awt.FontMetrics;

/** Text for a limited space. */
final class ShortText {
    private ShortText() {}

    /**
     * The text on one line if it fits into the width, in pixels; else without its middle, so that
     * the start of a file's name and its extension both show.
     */
    static String fitting(String text, FontMetrics metrics, int width) {
        String line = Printable.line(text);
        if (metrics.stringWidth(line) <= width) {
            return line;
        }
        int[] characters = line.codePoints().toArray();
        for (int kept = characters.length - 1; kept > 0; --kept) {
            int tail = Math.min(8, kept / 3);
            String shorter = new String(characters, 0, kept - tail) + "…"
                    + new String(characters, characters.length - tail, tail);
            if (metrics.stringWidth(shorter) <= width) {
                return shorter;
            }
        }
        return "…";
    }
}
