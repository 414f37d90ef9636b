package com.morrowfen.lumatrice.conformance;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.awt.Color;
import java.awt.Graphics2D;
import java.awt.image.BufferedImage;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.concurrent.TimeUnit;
import javax.imageio.ImageIO;

/** Makes pictures and videos to import. */
final class TestFiles {
    private TestFiles() {}

    /**
     * A picture in four quarters: red, green below it, blue to its right, white in the last one.
     * The format follows from the extension, png or else jpg.
     */
    static Path picture(Path file, int width, int height) throws IOException {
        BufferedImage image = new BufferedImage(width, height, BufferedImage.TYPE_INT_RGB);
        Graphics2D graphics = image.createGraphics();
        Color[] quarters = {Color.RED, Color.BLUE, Color.GREEN, Color.WHITE};
        for (int i = 0; i < quarters.length; ++i) {
            graphics.setColor(quarters[i]);
            graphics.fillRect(i % 2 * (width / 2), i / 2 * (height / 2), width - width / 2,
                    height - height / 2);
        }
        graphics.dispose();
        String format = file.toString().toLowerCase().endsWith(".png") ? "png" : "jpg";
        assertTrue(ImageIO.write(image, format, file.toFile()));
        return file;
    }

    /** One second of video, made with ffmpeg. */
    static Path video(Path file, int width, int height) throws IOException, InterruptedException {
        Process ffmpeg = new ProcessBuilder("ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i",
                "testsrc=size=" + width + "x" + height + ":rate=10", "-t", "1", "-pix_fmt",
                "yuv420p", file.toString()).inheritIO().start();
        assertTrue(ffmpeg.waitFor(60, TimeUnit.SECONDS));
        assertEquals(0, ffmpeg.exitValue());
        return file;
    }

    static Path text(Path file, String content) throws IOException {
        return Files.writeString(file, content);
    }
}
