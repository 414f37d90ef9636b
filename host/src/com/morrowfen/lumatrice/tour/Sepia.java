package com.morrowfen.lumatrice.tour;

import java.awt.image.BufferedImage;
import java.io.IOException;
import java.nio.file.Path;
import javax.imageio.ImageIO;

/** An edit that anybody can see: brown tones, darker towards the edges. */
final class Sepia {
    private Sepia() {}

    /**
     * Renders the picture, of this size as it is displayed.
     *
     * @throws IOException also when the file's pixels lie otherwise, which only its metadata tells
     */
    static void render(Path original, Path rendered, int displayedWidth, int displayedHeight)
            throws IOException {
        BufferedImage source = ImageIO.read(original.toFile());
        if (source == null) {
            throw new IOException("The picture for editing cannot be read: " + original);
        }
        int width = source.getWidth();
        int height = source.getHeight();
        if (width != displayedWidth || height != displayedHeight) {
            throw new IOException("The picture lies on its side: a small host cannot edit it");
        }
        BufferedImage result = new BufferedImage(width, height, BufferedImage.TYPE_INT_RGB);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                double across = 2.0 * x / width - 1;
                double down = 2.0 * y / height - 1;
                double light = 1 - 0.3 * (across * across + down * down);
                result.setRGB(x, y, toned(source.getRGB(x, y), light));
            }
        }
        if (!ImageIO.write(result, "jpg", rendered.toFile())) {
            throw new IOException("The edit could not be written: " + rendered);
        }
    }

    private static int toned(int rgb, double light) {
        double grey = (0.299 * (rgb >> 16 & 255) + 0.587 * (rgb >> 8 & 255) + 0.114 * (rgb & 255))
                * light;
        return channel(grey * 1.07 + 20) << 16 | channel(grey * 0.92 + 8) << 8
                | channel(grey * 0.70);
    }

    private static int channel(double value) {
        return (int) Math.max(0, Math.min(255, value));
    }
}
