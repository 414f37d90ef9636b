package com.morrowfen.lumatrice.tour;

import java.awt.Color;
import java.awt.Font;
import java.awt.Graphics2D;
import java.awt.Shape;
import java.awt.geom.Ellipse2D;
import java.awt.geom.Path2D;
import java.awt.geom.RoundRectangle2D;
import java.awt.image.BufferedImage;
import java.io.IOException;
import javax.imageio.ImageIO;

/** Paints one cell of the grid: the picture, its name, its date and size. */
final class CellPainter {
    /** Of a whole cell, in pixels. */
    static final int HEIGHT = Cell.HEIGHT + 58;

    private static final int CORNER = 16;
    private static final int BADGE = 36;
    private static final Color EMPTY = new Color(0x23262c);
    private static final Color BRIGHT = new Color(0xe8e9eb);
    private static final Color MUTED = new Color(0x9aa0a8);
    private static final Font NAME = new Font(Font.SANS_SERIF, Font.BOLD, 17);
    private static final Font DETAILS = new Font(Font.SANS_SERIF, Font.PLAIN, 15);

    private CellPainter() {}

    static void paint(Graphics2D graphics, Tile tile, int x, int y) throws IOException {
        Shape frame =
                new RoundRectangle2D.Double(x, y, Cell.WIDTH, Cell.HEIGHT, CORNER, CORNER);
        graphics.setColor(EMPTY);
        graphics.fill(frame);
        BufferedImage picture =
                tile.hasPicture() ? ImageIO.read(tile.file().toFile()) : null;
        if (picture == null) {
            drawText(graphics, "no picture", DETAILS, MUTED, x + 16, y + Cell.HEIGHT / 2);
        } else {
            drawCovering(graphics, picture, frame, x, y);
        }
        if (tile.asset().isVideo()) {
            drawPlayBadge(graphics, x + 12, y + Cell.HEIGHT - BADGE - 12);
        }
        drawText(graphics, tile.name(), NAME, BRIGHT, x, y + Cell.HEIGHT + 26);
        drawText(graphics, Cell.details(tile.asset()), DETAILS, MUTED, x,
                y + Cell.HEIGHT + 49);
    }

    /** Fills the frame with the middle of the picture. */
    private static void drawCovering(
            Graphics2D graphics, BufferedImage picture, Shape frame, int x, int y) {
        double scale = Math.max((double) Cell.WIDTH / picture.getWidth(),
                (double) Cell.HEIGHT / picture.getHeight());
        int width = (int) Math.round(picture.getWidth() * scale);
        int height = (int) Math.round(picture.getHeight() * scale);
        int left = x + (Cell.WIDTH - width) / 2;
        int top = y + (Cell.HEIGHT - height) / 2;
        Shape before = graphics.getClip();
        graphics.clip(frame);
        graphics.drawImage(picture, left, top, width, height, null);
        graphics.setClip(before);
    }

    private static void drawPlayBadge(Graphics2D graphics, int x, int y) {
        graphics.setColor(new Color(0, 0, 0, 170));
        graphics.fill(new Ellipse2D.Double(x, y, BADGE, BADGE));
        Path2D triangle = new Path2D.Double();
        triangle.moveTo(x + 0.40 * BADGE, y + 0.28 * BADGE);
        triangle.lineTo(x + 0.74 * BADGE, y + 0.50 * BADGE);
        triangle.lineTo(x + 0.40 * BADGE, y + 0.72 * BADGE);
        triangle.closePath();
        graphics.setColor(Color.WHITE);
        graphics.fill(triangle);
    }

    private static void drawText(
            Graphics2D graphics, String text, Font font, Color color, int x, int baseline) {
        graphics.setFont(font);
        graphics.setColor(color);
        graphics.drawString(
                ShortText.fitting(text, graphics.getFontMetrics(), Cell.WIDTH), x, baseline);
    }
}
