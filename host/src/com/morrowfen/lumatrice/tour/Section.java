package com.morrowfen.lumatrice.tour;

import java.util.List;

/**
 * A part of the contact sheet.
 *
 * @param heading null when the sheet is not divided
 */
record Section(String heading, List<Tile> tiles) {
    boolean hasHeading() {
        return heading != null;
    }

    Section first(int count) {
        return new Section(heading, tiles.subList(0, Math.min(count, tiles.size())));
    }
}
