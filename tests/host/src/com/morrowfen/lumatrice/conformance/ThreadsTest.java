package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.*;
import static org.junit.jupiter.api.Assertions.assertEquals;

import java.io.RandomAccessFile;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.Callable;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Several of the host's threads in the library at once. */
class ThreadsTest {
    private final ExecutorService host = Executors.newFixedThreadPool(8);

    @TempDir Path folder;

    @AfterEach
    void end() {
        host.shutdownNow();
    }

    @Test
    void eachCallIsAnswered() throws Exception {
        String shown = importFile(picture(folder.resolve("shown.jpg"), 640, 480));
        String album = made(PHOTOS.nativeCreateAlbum("all", null));
        List<Callable<Void>> tasks = new ArrayList<>();
        for (int i = 0; i < 48; ++i) {
            int number = i;
            Path file = picture(folder.resolve(i + ".png"), 16, 16);
            tasks.add(() -> {
                assertJpeg(PHOTOS.nativeRequestThumbnail(shown, 20 + number, 20));
                String own = importFile(file);
                Path out = folder.resolve("out" + number);
                assertEquals(0, PHOTOS.nativeExportToFile(own, out.toString(), number));
                assertEquals(-1, Files.mismatch(file, out));
                assertEquals(1, PHOTOS.nativeAddAssetsToAlbum(album, new String[] {own}));
                return null;
            });
        }
        for (Future<Void> one : host.invokeAll(tasks)) {
            one.get();
        }
        assertEquals(48, assets(PHOTOS.nativeListAlbumAssets(album, 100, 0)).size());
        assertEquals(49, PHOTOS.nativeAssetCount());
    }

    @Test
    void aGigabytesExportIsCancelledInTheMiddle() throws Exception {
        Path huge = picture(folder.resolve("huge.jpg"), 20, 20);
        try (RandomAccessFile file = new RandomAccessFile(huge.toFile(), "rw")) {
            file.setLength(1_000_000_000); // what stands behind a JPEG's end is no fault of it
        }
        String asset = importFile(huge);
        Path out = folder.resolve("exported.jpg");
        int result = 0;
        for (int i = 0; i < 20 && result == 0; ++i) { // until a cancellation comes before the end
            Files.deleteIfExists(out);
            Future<Integer> export =
                    host.submit(() -> PHOTOS.nativeExportToFile(asset, out.toString(), 77));
            while (!export.isDone() && (!Files.exists(out) || Files.size(out) < 50_000_000)) {
                Thread.sleep(1);
            }
            PHOTOS.nativeCancelExport(76); // somebody else's
            PHOTOS.nativeCancelExport(77);
            result = export.get();
        }
        assertEquals(-4, result);
        PHOTOS.nativeCancelExport(77); // over: nothing happens
        assertEquals(1, PHOTOS.nativeDeleteAssets(new String[] {asset}));
    }
}
