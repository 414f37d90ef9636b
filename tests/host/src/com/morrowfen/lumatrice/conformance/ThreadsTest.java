package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.PHOTOS;
import static com.morrowfen.lumatrice.conformance.TestLibrary.importFile;
import static com.morrowfen.lumatrice.conformance.TestLibrary.wholeLibrary;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Path;
import java.util.ArrayList;
import java.util.HashSet;
import java.util.List;
import java.util.Set;
import java.util.concurrent.Callable;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.atomic.AtomicReference;
import java.util.stream.Collectors;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.Timeout;
import org.junit.jupiter.api.io.TempDir;

@Timeout(value = 600, unit = TimeUnit.SECONDS)
class ThreadsTest {
    private static final int THREADS = 8;

    @TempDir Path folder;

    private static <T> List<T> runAll(List<Callable<T>> tasks) throws Exception {
        ExecutorService executor = Executors.newFixedThreadPool(THREADS);
        try {
            List<T> results = new ArrayList<>();
            for (Future<T> result : executor.invokeAll(tasks)) {
                results.add(result.get());
            }
            return results;
        } finally {
            executor.shutdownNow();
        }
    }

    /** A host may give its threads little room: here as little as the JVM itself can do with. */
    @Test
    void everyMethodWorksOnASmallStack() throws Exception {
        Path file = TestFiles.picture(folder.resolve("small.jpg"), 640, 480);
        AtomicReference<Throwable> failure = new AtomicReference<>();
        Thread thread = new Thread(null, () -> callEverything(file), "small", 128 << 10);
        thread.setUncaughtExceptionHandler((which, thrown) -> failure.set(thrown));
        thread.start();
        thread.join();
        assertNull(failure.get());
    }

    private void callEverything(Path file) {
        String id = importFile(file);
        String other = importFile(file);
        String[] both = {id, other};
        String out = folder.resolve("small out.jpg").toString();
        String outer = TestLibrary.newFolder("small outer", null);
        String inner = TestLibrary.newFolder("small inner", outer);
        String album = TestLibrary.newAlbum("small", inner);
        assertTrue(PHOTOS.nativeAuthorize() > 0 && PHOTOS.nativeAssetCount() > 1);
        assertEquals(1, PHOTOS.nativeSetFavorite(new String[] {id}, true));
        assertEquals(1, PHOTOS.nativeAddAssetsToAlbum(album, new String[] {id}));
        assertEquals(1, PHOTOS.nativeCopyAssetAttributes(id, other));
        assertEquals(1, PHOTOS.nativeAlbumContainsAsset(album, other));
        assertEquals(2, TestLibrary.albumPage(album, 10, 0).size());
        assertEquals(2, TestLibrary.page(2, 0).size());
        assertEquals(List.of("small"), TestLibrary.titles(inner));
        assertEquals("small", PHOTOS.nativeCollectionTitle(album));
        assertEquals(outer, PHOTOS.nativeParentCollection(inner));
        assertTrue(PHOTOS.nativeRequestThumbnail(id, 100, 100).length > 0);
        PHOTOS.nativeCancelExport(4711);
        assertEquals(0, PHOTOS.nativeContentEditingImage(id, out));
        assertEquals(0, PHOTOS.nativeApplyEdit(id, out));
        assertEquals(0, PHOTOS.nativeExportToFile(id, out, 4711));
        assertEquals(1, PHOTOS.nativeSetHidden(new String[] {id}, true));
        String copy = TestLibrary.duplicate(outer);
        assertEquals(0, PHOTOS.nativeRenameAlbum(copy, "renamed"));
        assertEquals(2, PHOTOS.nativeRemoveAssetsFromAlbum(album, both));
        assertEquals(0, PHOTOS.nativeDeleteAlbum(copy));
        assertEquals(2, PHOTOS.nativeDeleteAssets(both));
    }

    @Test
    void importingAtOnceLosesNothing() throws Exception {
        int before = PHOTOS.nativeAssetCount();
        List<Callable<String>> tasks = new ArrayList<>();
        for (int i = 0; i < 4 * THREADS; ++i) {
            Path file = TestFiles.picture(folder.resolve("at once " + i + ".png"), 16, 16);
            tasks.add(() -> importFile(file));
        }
        Set<String> ids = new HashSet<>(runAll(tasks));
        assertEquals(tasks.size(), ids.size());
        assertEquals(before + tasks.size(), PHOTOS.nativeAssetCount());
        Set<String> listed = wholeLibrary().stream().map(TestLibrary.Asset::id)
                .collect(Collectors.toSet());
        assertTrue(listed.containsAll(ids));
    }

    @Test
    void listingRenderingAndImportingAtOnceAnswersEachCall() throws Exception {
        String id = importFile(TestFiles.picture(folder.resolve("shown.jpg"), 640, 480));
        List<Callable<Boolean>> tasks = new ArrayList<>();
        for (int i = 0; i < 6 * THREADS; ++i) {
            int size = 20 + i;
            Path file = TestFiles.picture(folder.resolve("meanwhile " + i + ".jpg"), 32, 32);
            tasks.add(() -> {
                ThumbnailTest.decode(PHOTOS.nativeRequestThumbnail(id, size, size));
                String own = importFile(file);
                boolean isListed = wholeLibrary().stream().anyMatch(one -> one.id().equals(own));
                return isListed && PHOTOS.nativeAssetCount() > 0
                        && PHOTOS.nativeAuthorize() > 0;
            });
        }
        assertTrue(runAll(tasks).stream().allMatch(answered -> answered));
    }
}
