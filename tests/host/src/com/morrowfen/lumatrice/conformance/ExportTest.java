package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.PHOTOS;
import static com.morrowfen.lumatrice.conformance.TestLibrary.importFile;
import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.file.Files;
import java.nio.file.LinkOption;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.Timeout;
import org.junit.jupiter.api.condition.EnabledOnOs;
import org.junit.jupiter.api.condition.OS;
import org.junit.jupiter.api.io.TempDir;

class ExportTest {
    @TempDir Path folder;

    private int export(String asset, Path destination) {
        return PHOTOS.nativeExportToFile(asset, destination.toString(), 1);
    }

    @Test
    void writesTheBytesThatWereImported() throws IOException {
        Path picture = TestFiles.picture(folder.resolve("a.jpg"), 900, 600);
        String asset = importFile(picture);
        Path destination = folder.resolve("made/on/the way/b.jpg");
        assertEquals(0, export(asset, destination));
        assertArrayEquals(Files.readAllBytes(picture), Files.readAllBytes(destination));
    }

    @Test
    void replacesWhatStandsAtTheDestination() throws IOException {
        Path picture = TestFiles.picture(folder.resolve("a.jpg"), 20, 20);
        String asset = importFile(picture);
        byte[] bytes = Files.readAllBytes(picture);
        Path file = TestFiles.text(folder.resolve("longer"), "x".repeat(100_000));
        assertEquals(0, export(asset, file));
        assertArrayEquals(bytes, Files.readAllBytes(file));

        Path directory = folder.resolve("directory");
        Files.createDirectories(directory.resolve("with/contents"));
        assertEquals(0, export(asset, directory));
        assertArrayEquals(bytes, Files.readAllBytes(directory));

        Path target = TestFiles.text(folder.resolve("target"), "kept");
        Path link = Files.createSymbolicLink(folder.resolve("link"), target);
        Path dangling =
                Files.createSymbolicLink(folder.resolve("dangling"), folder.resolve("nowhere"));
        for (Path place : List.of(link, dangling)) {
            assertEquals(0, export(asset, place));
            assertTrue(Files.isRegularFile(place, LinkOption.NOFOLLOW_LINKS));
        }
        assertEquals("kept", Files.readString(target));
        assertFalse(Files.exists(folder.resolve("nowhere")));
    }

    @Test
    void leavesTheDestinationAloneWithoutAnAsset() throws IOException {
        Path kept = TestFiles.text(folder.resolve("kept"), "kept");
        assertEquals(-1, export("no such asset", kept));
        assertEquals(-1, export("", folder.resolve("new/directory/x")));
        assertEquals("kept", Files.readString(kept));
        assertFalse(Files.exists(folder.resolve("new")));
    }

    @Test
    @EnabledOnOs(value = OS.LINUX, disabledReason = "the places are Linux's")
    void isRefusedWhereNoFileCanBe() throws IOException {
        String asset = importFile(TestFiles.picture(folder.resolve("a.jpg"), 20, 20));
        Path file = TestFiles.text(folder.resolve("file"), "a file is no directory");
        for (String place : List.of(file + "/b.jpg", "/proc/nowhere/b.jpg", "",
                System.getenv("HOME"))) {
            assertEquals(-3, PHOTOS.nativeExportToFile(asset, place, 1), place);
        }
        assertEquals("a file is no directory", Files.readString(file));
        assertEquals(asset, TestLibrary.assetWith(asset).id());
    }

    @Test
    @Timeout(600)
    void ofAGigabyteIsCancelledInTheMiddle() throws Exception {
        Path picture = TestFiles.picture(folder.resolve("huge.jpg"), 20, 20);
        try (RandomAccessFile file = new RandomAccessFile(picture.toFile(), "rw")) {
            file.setLength(1_000_000_000); // what stands behind a JPEG's end is no fault of it
        }
        String asset = importFile(picture);
        Files.delete(picture);
        Path destination = folder.resolve("exported.jpg");
        ExecutorService host = Executors.newSingleThreadExecutor();
        try {
            int result;
            do { // until the cancellation comes before the end
                Files.deleteIfExists(destination);
                Future<Integer> export = host.submit(
                        () -> PHOTOS.nativeExportToFile(asset, destination.toString(), 77));
                while (!Files.exists(destination) || Files.size(destination) < 50_000_000) {
                    Thread.sleep(1);
                }
                PHOTOS.nativeCancelExport(76); // somebody else's
                PHOTOS.nativeCancelExport(77);
                result = export.get();
            } while (result == 0);
            assertEquals(-4, result);
        } finally {
            host.shutdown();
        }
        long size = Files.size(destination);
        assertTrue(size > 0 && size < 1_000_000_000, () -> "a part stays: " + size);
        PHOTOS.nativeCancelExport(77); // over: nothing happens
        assertEquals(1, PHOTOS.nativeDeleteAssets(new String[] {asset}));
    }

    @Test
    void runsOnManyThreadsAtOnce() throws Exception {
        Path picture = TestFiles.picture(folder.resolve("a.jpg"), 400, 300);
        byte[] bytes = Files.readAllBytes(picture);
        String asset = importFile(picture);
        ExecutorService host = Executors.newFixedThreadPool(8);
        try {
            List<Future<Integer>> results = new ArrayList<>();
            for (int i = 0; i < 64; ++i) {
                String destination = folder.resolve("copy" + i).toString();
                int number = i;
                results.add(
                        host.submit(() -> PHOTOS.nativeExportToFile(asset, destination, number)));
            }
            for (Future<Integer> result : results) {
                assertEquals(0, result.get());
            }
        } finally {
            host.shutdown();
        }
        for (int i = 0; i < 64; ++i) {
            assertArrayEquals(bytes, Files.readAllBytes(folder.resolve("copy" + i)));
        }
    }
}
