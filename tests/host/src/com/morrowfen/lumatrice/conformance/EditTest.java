package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.PHOTOS;
import static com.morrowfen.lumatrice.conformance.TestLibrary.assetWith;
import static com.morrowfen.lumatrice.conformance.TestLibrary.importFile;
import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.awt.image.BufferedImage;
import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.concurrent.atomic.AtomicBoolean;
import javax.imageio.ImageIO;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

class EditTest {
    @TempDir Path folder;

    private int editingImage(String asset, Path destination) {
        return PHOTOS.nativeContentEditingImage(asset, destination.toString());
    }

    private int apply(String asset, Path rendered) {
        return PHOTOS.nativeApplyEdit(asset, rendered.toString());
    }

    private byte[] exported(String asset) throws IOException {
        Path destination = folder.resolve("exported");
        assertEquals(0, PHOTOS.nativeExportToFile(asset, destination.toString(), 1));
        return Files.readAllBytes(destination);
    }

    @Test
    void roundTripShowsTheEditAndKeepsTheOriginal() throws IOException {
        Path picture = TestFiles.picture(folder.resolve("a.jpg"), 320, 200);
        byte[] original = Files.readAllBytes(picture);
        String asset = importFile(picture);
        Path forEditing = TestFiles.text(folder.resolve("for editing.jpg"), "replaced");
        assertEquals(0, editingImage(asset, forEditing));
        assertArrayEquals(original, Files.readAllBytes(forEditing));

        Path rendered = TestFiles.picture(folder.resolve("rendered.jpg"), 100, 150);
        assertEquals(0, apply(asset, rendered));
        assertEquals(100, assetWith(asset).width());
        assertEquals(150, assetWith(asset).height());
        assertEquals("a.jpg", assetWith(asset).filename());
        assertArrayEquals(Files.readAllBytes(rendered), exported(asset));
        byte[] thumbnail = PHOTOS.nativeRequestThumbnail(asset, 50, 50);
        assertNotNull(thumbnail);
        BufferedImage shown = ImageIO.read(new ByteArrayInputStream(thumbnail));
        assertTrue(shown.getHeight() > shown.getWidth(), "the edited picture stands upright");

        // An edit of an edited picture starts from the original again.
        assertEquals(0, editingImage(asset, forEditing));
        assertArrayEquals(original, Files.readAllBytes(forEditing));
        Path second = TestFiles.picture(folder.resolve("second.jpg"), 90, 30);
        assertEquals(0, apply(asset, second));
        assertEquals(90, assetWith(asset).width());
        assertArrayEquals(Files.readAllBytes(second), exported(asset));
    }

    @Test
    void whatIsNoJpegIsRefusedAndChangesNothing() throws IOException {
        Path picture = TestFiles.picture(folder.resolve("a.jpg"), 320, 200);
        byte[] original = Files.readAllBytes(picture);
        String asset = importFile(picture);
        Path empty = TestFiles.text(folder.resolve("empty.jpg"), "");
        Path text = TestFiles.text(folder.resolve("text.jpg"), "not a picture");
        Path png = TestFiles.picture(folder.resolve("a.png"), 30, 30);
        Path cut = Files.write(
                folder.resolve("cut.jpg"), Arrays.copyOf(original, original.length / 2));
        for (Path bad : new Path[] {empty, text, png, cut}) {
            assertEquals(-4, apply(asset, bad), bad.toString());
        }
        assertTrue(TestLibrary.log().contains(" apply edit failed: "));
        assertEquals(320, assetWith(asset).width());
        assertArrayEquals(original, exported(asset));
    }

    @Test
    void theRenderedFileIsReadBeforeTheAssetIsLookedUp() throws IOException {
        String asset = importFile(TestFiles.picture(folder.resolve("a.jpg"), 20, 20));
        Path missing = folder.resolve("missing.jpg");
        Path rendered = TestFiles.picture(folder.resolve("rendered.jpg"), 20, 20);
        assertEquals(-3, apply("no such asset", missing));
        assertEquals(-3, apply(asset, missing));
        assertEquals(-3, apply(asset, folder));
        assertEquals(-1, apply("no such asset", rendered));
        assertEquals(-1, PHOTOS.nativeApplyEdit(null, rendered.toString()));
        assertEquals(-1, PHOTOS.nativeApplyEdit(asset, null));
        assertEquals(-1, PHOTOS.nativeContentEditingImage(null, missing.toString()));
        assertEquals(-1, PHOTOS.nativeContentEditingImage(asset, null));
        assertEquals(-1, editingImage("no such asset", missing));
    }

    @Test
    void theEditingImageNeedsItsDirectory() throws IOException {
        String asset = importFile(TestFiles.picture(folder.resolve("a.jpg"), 20, 20));
        assertEquals(-3, editingImage(asset, folder.resolve("no/such/directory.jpg")));
        assertFalse(Files.exists(folder.resolve("no")));
        assertTrue(TestLibrary.log().contains(" editing image copy failed: "));
    }

    @Test
    void aVideoIsNotEdited() throws Exception {
        String video = importFile(TestFiles.video(folder.resolve("film.mp4"), 64, 48));
        assertEquals(-2, editingImage(video, folder.resolve("x.jpg")));
        Path rendered = TestFiles.picture(folder.resolve("rendered.jpg"), 20, 20);
        assertEquals(-4, apply(video, rendered));
        assertEquals(64, assetWith(video).width());
    }

    @Test
    void anExportBesideEditsIsAlwaysOneWholePicture() throws Exception {
        Path picture = TestFiles.picture(folder.resolve("a.jpg"), 320, 200);
        Path rendered = TestFiles.picture(folder.resolve("rendered.jpg"), 100, 150);
        String asset = importFile(picture);
        byte[] original = Files.readAllBytes(picture);
        byte[] edited = Files.readAllBytes(rendered);
        AtomicBoolean done = new AtomicBoolean();
        Thread editor = new Thread(() -> {
            for (int i = 0; i < 15; ++i) {
                apply(asset, rendered);
            }
            done.set(true);
        });
        editor.start();
        while (!done.get()) {
            byte[] seen = exported(asset);
            assertTrue(Arrays.equals(seen, original) || Arrays.equals(seen, edited));
        }
        editor.join();
        assertArrayEquals(edited, exported(asset));
    }
}
