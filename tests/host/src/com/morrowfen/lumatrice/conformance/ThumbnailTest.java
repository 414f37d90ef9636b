package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.PHOTOS;
import static com.morrowfen.lumatrice.conformance.TestLibrary.importFile;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.awt.image.BufferedImage;
import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.nio.file.Path;
import javax.imageio.ImageIO;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

class ThumbnailTest {
    @TempDir Path folder;

    /** The picture in a complete JPEG file. */
    static BufferedImage decode(byte[] jpeg) throws IOException {
        assertNotNull(jpeg, "no thumbnail");
        assertTrue(jpeg.length > 4 && (jpeg[0] & 0xFF) == 0xFF && (jpeg[1] & 0xFF) == 0xD8,
                "does not start like a JPEG");
        assertEquals(0xFF, jpeg[jpeg.length - 2] & 0xFF, "does not end like a JPEG");
        assertEquals(0xD9, jpeg[jpeg.length - 1] & 0xFF, "does not end like a JPEG");
        BufferedImage picture = ImageIO.read(new ByteArrayInputStream(jpeg));
        assertNotNull(picture, "cannot be decoded");
        return picture;
    }

    private static void assertColour(int expected, BufferedImage picture, double x, double y) {
        int actual = picture.getRGB((int) (picture.getWidth() * x),
                (int) (picture.getHeight() * y));
        for (int shift : new int[] {0, 8, 16}) {
            int difference = Math.abs((expected >> shift & 0xFF) - (actual >> shift & 0xFF));
            assertTrue(difference <= 24,
                    String.format("%06x instead of %06x", actual & 0xFFFFFF, expected));
        }
    }

    @ParameterizedTest
    @CsvSource({
        "400, 300, jpg, 100, 100", "400, 300, png, 200, 50", "300, 400, jpg, 120, 160",
        "5000, 4000, jpg, 320, 240", "3000, 100, png, 90, 90"
    })
    void coversTheSizeWithTheAspectRatioKept(
            int width, int height, String format, int targetWidth, int targetHeight)
            throws IOException {
        String id = importFile(
                TestFiles.picture(folder.resolve("picture." + format), width, height));
        BufferedImage thumbnail =
                decode(PHOTOS.nativeRequestThumbnail(id, targetWidth, targetHeight));
        assertTrue(thumbnail.getWidth() >= targetWidth, "width " + thumbnail.getWidth());
        assertTrue(thumbnail.getHeight() >= targetHeight, "height " + thumbnail.getHeight());
        double ideal = (double) thumbnail.getHeight() * width / height;
        double tolerance = 1 + (double) width / height;
        assertEquals(ideal, thumbnail.getWidth(), tolerance);
        assertColour(0xFF0000, thumbnail, 0.25, 0.25);
        assertColour(0x0000FF, thumbnail, 0.75, 0.25);
        assertColour(0x00FF00, thumbnail, 0.25, 0.75);
        assertColour(0xFFFFFF, thumbnail, 0.75, 0.75);
    }

    @Test
    void ofAVideoIsAFrame() throws Exception {
        String id = importFile(TestFiles.video(folder.resolve("film.mov"), 640, 360));
        BufferedImage thumbnail = decode(PHOTOS.nativeRequestThumbnail(id, 160, 90));
        assertEquals(640.0 / 360, (double) thumbnail.getWidth() / thumbnail.getHeight(), 0.05);
    }

    @Test
    void isNullForAnIdentifierThatNamesNothing() {
        assertNull(PHOTOS.nativeRequestThumbnail("", 100, 100));
        assertNull(PHOTOS.nativeRequestThumbnail("no such asset", 100, 100));
        assertNull(PHOTOS.nativeRequestThumbnail(
                "00000000-0000-0000-0000-000000000000/L0/001", 100, 100));
        assertNull(PHOTOS.nativeRequestThumbnail("\uD83D\uDE00", 100, 100));
        assertNull(PHOTOS.nativeRequestThumbnail("x".repeat(1_000_000), 100, 100));
    }

    @ParameterizedTest
    @CsvSource({
        "0, 0", "0, 100", "100, -5", "-1, -1", "-2147483648, -2147483648", "1, 1", "1, 3000",
        "2147483647, 1", "2147483647, 2147483647"
    })
    void ofAnOddSizeIsNullOrAPicture(int width, int height) throws IOException {
        String id = importFile(TestFiles.picture(folder.resolve("odd.jpg"), 40, 30));
        byte[] thumbnail = PHOTOS.nativeRequestThumbnail(id, width, height);
        if (thumbnail != null) {
            decode(thumbnail);
        }
    }
}
