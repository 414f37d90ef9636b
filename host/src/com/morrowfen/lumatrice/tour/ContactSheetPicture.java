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

/** The contact sheet as one picture: a heading above a grid of the newest assets. */
final class ContactSheetPicture {
    private static final int COLUMNS = 5;
    private static final int MOST_CELLS = 200;
    private static final int MARGIN = 48;
    private static final int GAP = 28;
    private static final int HEADING_HEIGHT = 112;
    private static final Color BACKGROUND = new Color(0x14161a);
    private static final Color BRIGHT = new Color(0xe8e9eb);
    private static final Color MUTED = new Color(0x9aa0a8);

    private ContactSheetPicture() {}

    static Path write(String title, List<Thumbnail> thumbnails, Path output) throws IOException {
        Path file = output.resolve("contact-sheet.png");
        if (!ImageIO.write(draw(title, thumbnails), "png", file.toFile())) {
            throw new IOException("This JDK cannot write PNG files");
        }
        return file;
    }

    private static BufferedImage draw(String title, List<Thumbnail> thumbnails)
            throws IOException {
        List<Thumbnail> shown = thumbnails.subList(0, Math.min(thumbnails.size(), MOST_CELLS));
        int rows = (shown.size() + COLUMNS - 1) / COLUMNS;
        int width = 2 * MARGIN + COLUMNS * Cell.WIDTH + (COLUMNS - 1) * GAP;
        int height = MARGIN + HEADING_HEIGHT + rows * (CellPainter.HEIGHT + GAP) + MARGIN - GAP;
        BufferedImage sheet = new BufferedImage(width, height, BufferedImage.TYPE_INT_RGB);
        Graphics2D graphics = sheet.createGraphics();
        try {
            setQuality(graphics);
            graphics.setColor(BACKGROUND);
            graphics.fillRect(0, 0, width, height);
            drawHeading(graphics, title, thumbnails, shown.size(), width);
            for (int i = 0; i < shown.size(); ++i) {
                int x = MARGIN + i % COLUMNS * (Cell.WIDTH + GAP);
                int y = MARGIN + HEADING_HEIGHT + i / COLUMNS * (CellPainter.HEIGHT + GAP);
                CellPainter.paint(graphics, shown.get(i), x, y);
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

    private static void drawHeading(Graphics2D graphics, String title,
            List<Thumbnail> thumbnails, int shown, int width) {
        graphics.setFont(new Font(Font.SANS_SERIF, Font.BOLD, 44));
        graphics.setColor(BRIGHT);
        graphics.drawString(
                ShortText.fitting(title, graphics.getFontMetrics(), width - 2 * MARGIN), MARGIN,
                MARGIN + 40);
        String totals = Cell.totals(thumbnails);
        if (shown < thumbnails.size()) {
            totals += String.format(Locale.ROOT, " · the first %,d shown", shown);
        }
        graphics.setFont(new Font(Font.SANS_SERIF, Font.PLAIN, 20));
        graphics.setColor(MUTED);
        graphics.drawString(totals, MARGIN, MARGIN + 76);
    }
}
