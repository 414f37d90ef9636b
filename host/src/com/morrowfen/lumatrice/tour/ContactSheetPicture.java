package com.morrowfen.lumatrice.tour;

import java.awt.Color;
import java.awt.Font;
import java.awt.Graphics2D;
import java.awt.RenderingHints;
import java.awt.image.BufferedImage;
import java.io.IOException;
import java.nio.file.Path;
import java.util.List;
import java.util.Locale;
import javax.imageio.ImageIO;

/** The contact sheet as one picture: a heading above grids of assets, as many as it has room for. */
final class ContactSheetPicture {
    private static final int HEADING_HEIGHT = 112;
    private static final Color BACKGROUND = new Color(0x14161a);
    private static final Color BRIGHT = new Color(0xe8e9eb);
    private static final Color MUTED = new Color(0x9aa0a8);
    private static final Font TITLE = new Font(Font.SANS_SERIF, Font.BOLD, 44);
    private static final Font SECTION = new Font(Font.SANS_SERIF, Font.BOLD, 26);
    private static final Font TOTALS = new Font(Font.SANS_SERIF, Font.PLAIN, 20);

    private ContactSheetPicture() {}

    /** @param tiles all that there are, in one section or more */
    static Path write(
            String title, List<Tile> tiles, List<Section> sections, Path output)
            throws IOException {
        Path file = output.resolve("contact-sheet.png");
        List<Section> shown = SheetLayout.fitting(sections);
        String totals = Cell.totals(tiles) + " · newest first";
        if (cells(shown) < cells(sections)) {
            totals += String.format(Locale.ROOT, " · the first %,d shown", cells(shown));
        }
        if (!ImageIO.write(draw(title, totals, shown), "png", file.toFile())) {
            throw new IOException("This JDK cannot write PNG files");
        }
        return file;
    }

    private static int cells(List<Section> sections) {
        return sections.stream().mapToInt(section -> section.tiles().size()).sum();
    }

    private static BufferedImage draw(String title, String totals, List<Section> sections)
            throws IOException {
        int top = SheetLayout.MARGIN + HEADING_HEIGHT;
        BufferedImage sheet = new BufferedImage(SheetLayout.WIDTH,
                top + SheetLayout.heightOf(sections) + SheetLayout.MARGIN,
                BufferedImage.TYPE_INT_RGB);
        Graphics2D graphics = sheet.createGraphics();
        try {
            setQuality(graphics);
            graphics.setColor(BACKGROUND);
            graphics.fillRect(0, 0, sheet.getWidth(), sheet.getHeight());
            drawText(graphics, title, TITLE, BRIGHT, SheetLayout.MARGIN, SheetLayout.MARGIN + 40);
            drawText(graphics, totals, TOTALS, MUTED, SheetLayout.MARGIN, SheetLayout.MARGIN + 76);
            for (Section section : sections) {
                drawSection(graphics, section, top);
                top += SheetLayout.heightOf(section) + SheetLayout.SECTION_GAP;
            }
        } finally {
            graphics.dispose();
        }
        return sheet;
    }

    private static void setQuality(Graphics2D graphics) {
        graphics.setRenderingHint(
                RenderingHints.KEY_ANTIALIASING, RenderingHints.VALUE_ANTIALIAS_ON);
        graphics.setRenderingHint(
                RenderingHints.KEY_TEXT_ANTIALIASING, RenderingHints.VALUE_TEXT_ANTIALIAS_ON);
        graphics.setRenderingHint(
                RenderingHints.KEY_INTERPOLATION, RenderingHints.VALUE_INTERPOLATION_BICUBIC);
    }

    private static void drawSection(Graphics2D graphics, Section section, int top)
            throws IOException {
        if (section.hasHeading()) {
            String totals = Cell.totals(section.tiles());
            int room = graphics.getFontMetrics(TOTALS).stringWidth(totals) + 16;
            int end = drawText(graphics, section.heading(), SECTION, BRIGHT, SheetLayout.MARGIN,
                    top + 28, SheetLayout.CONTENT_WIDTH - room);
            drawText(graphics, totals, TOTALS, MUTED, end + 16, top + 28);
        }
        for (int i = 0; i < section.tiles().size(); ++i) {
            CellPainter.paint(graphics, section.tiles().get(i), SheetLayout.cellLeft(i),
                    top + SheetLayout.cellTop(section, i));
        }
    }

    private static void drawText(
            Graphics2D graphics, String text, Font font, Color color, int x, int baseline) {
        drawText(graphics, text, font, color, x, baseline, SheetLayout.CONTENT_WIDTH);
    }

    /** Returns where the text ends. */
    private static int drawText(Graphics2D graphics, String text, Font font, Color color, int x,
            int baseline, int width) {
        graphics.setFont(font);
        graphics.setColor(color);
        String shown = ShortText.fitting(text, graphics.getFontMetrics(), width);
        graphics.drawString(shown, x, baseline);
        return x + graphics.getFontMetrics().stringWidth(shown);
    }
}
