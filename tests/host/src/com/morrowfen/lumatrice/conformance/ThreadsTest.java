package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.PHOTOS;
import static com.morrowfen.lumatrice.conformance.TestLibrary.importFile;
import static com.morrowfen.lumatrice.conformance.TestLibrary.wholeLibrary;
import static org.junit.jupiter.api.Assertions.assertEquals;
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
import java.util.stream.Collectors;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.Timeout;
import org.junit.jupiter.api.io.TempDir;

@Timeout(value = 120, unit = TimeUnit.SECONDS)
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
