package com.morrowfen.lumatrice.tour;

import java.util.ArrayList;
import java.util.List;

/** Where things lie on the contact sheet that is one picture, in pixels. */
final class SheetLayout {
    static final int MARGIN = 48;

    /** Between sections. */
    static final int SECTION_GAP = 44;

    private static final int COLUMNS = 5;

    /** The picture is held in memory, so it must not grow with the library. */
    private static final int MOST_ROWS = 40;

    private static final int GAP = 28;
    private static final int SECTION_HEADING_HEIGHT = 52;

    static final int CONTENT_WIDTH = COLUMNS * Cell.WIDTH + (COLUMNS - 1) * GAP;
    static final int WIDTH = CONTENT_WIDTH + 2 * MARGIN;

    private SheetLayout() {}

    /** The first sections, the last of them perhaps shortened. */
    static List<Section> fitting(List<Section> sections) {
        List<Section> shown = new ArrayList<>();
        int rowsLeft = MOST_ROWS;
        for (Section section : sections) {
            if (rowsLeft == 0) {
                break;
            }
            Section part = section.first(rowsLeft * COLUMNS);
            shown.add(part);
            // The heading of an empty section needs room as well.
            rowsLeft -= Math.max(1, rowsOf(part));
        }
        return shown;
    }

    static int heightOf(List<Section> sections) {
        return sections.stream().mapToInt(SheetLayout::heightOf).sum()
                + (sections.size() - 1) * SECTION_GAP;
    }

    static int heightOf(Section section) {
        int rows = rowsOf(section);
        int grid = rows == 0 ? 0 : rows * (CellPainter.HEIGHT + GAP) - GAP;
        return headingHeightOf(section) + grid;
    }

    static int cellLeft(int index) {
        return MARGIN + index % COLUMNS * (Cell.WIDTH + GAP);
    }

    /** Below the top of the section. */
    static int cellTop(Section section, int index) {
        return headingHeightOf(section) + index / COLUMNS * (CellPainter.HEIGHT + GAP);
    }

    private static int headingHeightOf(Section section) {
        return section.hasHeading() ? SECTION_HEADING_HEIGHT : 0;
    }

    private static int rowsOf(Section section) {
        return (section.tiles().size() + COLUMNS - 1) / COLUMNS;
    }
}
