package com.morrowfen.lumatrice.torture;

import java.awt.image.BufferedImage;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Random;
import javax.imageio.ImageIO;

/** The files that everybody imports, and those that stand for edits; no two are the same. */
final class Pictures {
    private static final int PICTURES = 24;
    private static final int RENDERED = 4;

    final List<Path> files = new ArrayList<>();
    final List<Path> rendered = new ArrayList<>();
    private final List<byte[]> fileBytes = new ArrayList<>();
    private final List<byte[]> renderedBytes = new ArrayList<>();

    static void make(Path folder) throws IOException {
        Files.createDirectories(folder);
        Random random = new Random(1);
        for (int i = 0; i < PICTURES + RENDERED; ++i) {
            int side = i % 6 == 5 ? 900 : 40 + i;
            BufferedImage image = new BufferedImage(side, side, BufferedImage.TYPE_INT_RGB);
            for (int y = 0; y < side; ++y) {
                for (int x = 0; x < side; ++x) {
                    image.setRGB(x, y, random.nextInt(1 << 24));
                }
            }
            String format = i % 4 == 3 && i < PICTURES ? "png" : "jpg";
            ImageIO.write(image, format, folder.resolve(i + "." + format).toFile());
        }
    }

    Pictures(Path folder) throws IOException {
        for (int i = 0; i < PICTURES + RENDERED; ++i) {
            Path png = folder.resolve(i + ".png");
            Path file = Files.exists(png) ? png : folder.resolve(i + ".jpg");
            (i < PICTURES ? files : rendered).add(file);
            (i < PICTURES ? fileBytes : renderedBytes).add(Files.readAllBytes(file));
        }
    }

    /** Whether the file has the bytes of this picture. */
    boolean isPicture(Path file, int which) throws IOException {
        return Arrays.equals(Files.readAllBytes(file), fileBytes.get(which));
    }

    boolean isAnyPicture(Path file) throws IOException {
        return isOneOf(Files.readAllBytes(file), fileBytes);
    }

    boolean isAnyRendered(Path file) throws IOException {
        return isOneOf(Files.readAllBytes(file), renderedBytes);
    }

    private static boolean isOneOf(byte[] bytes, List<byte[]> all) {
        return all.stream().anyMatch(one -> Arrays.equals(one, bytes));
    }
}
