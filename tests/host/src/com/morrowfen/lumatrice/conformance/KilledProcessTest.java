package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.PHOTOS;
import static com.morrowfen.lumatrice.conformance.TestLibrary.assetsIn;
import static com.morrowfen.lumatrice.conformance.TestLibrary.duplicate;
import static com.morrowfen.lumatrice.conformance.TestLibrary.importPictures;
import static com.morrowfen.lumatrice.conformance.TestLibrary.level;
import static com.morrowfen.lumatrice.conformance.TestLibrary.newAlbum;
import static com.morrowfen.lumatrice.conformance.TestLibrary.newFolder;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.morrowfen.lumatrice.conformance.CollectionTree.Shape;
import com.morrowfen.lumatrice.conformance.TestLibrary.Collection;
import java.io.IOException;
import java.nio.file.Path;
import java.util.List;
import java.util.Random;
import java.util.Set;
import java.util.concurrent.TimeUnit;
import java.util.stream.Collectors;
import org.junit.jupiter.api.AfterAll;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.Timeout;
import org.junit.jupiter.api.condition.DisabledOnOs;
import org.junit.jupiter.api.condition.OS;
import org.junit.jupiter.api.io.TempDir;

/**
 * Another process changes the library and is killed at any moment, while this one has the library
 * open. What it had committed stays and is whole, and nothing else is there.
 */
@Timeout(300)
@DisabledOnOs(value = OS.WINDOWS, disabledReason = "processes end otherwise there")
class KilledProcessTest {
    private static final int ROUNDS = 8;

    private static String source;
    private static List<Shape> whole;

    /** 5 folders with 5 folders each, 11 albums in every one of those: 306 with the top. */
    @BeforeAll
    static void makeTree(@TempDir Path files) throws IOException {
        List<String> assets = importPictures(files, "killed", 12);
        source = newFolder("Killed", null);
        for (int i = 0; i < 5; ++i) {
            String outer = newFolder("outer " + i, source);
            for (int j = 0; j < 5; ++j) {
                String inner = newFolder("inner " + j, outer);
                for (int k = 0; k < 11; ++k) {
                    String album = newAlbum("album " + k, inner);
                    if (k > 0) {
                        assertEquals(k, PHOTOS.nativeAddAssetsToAlbum(
                                album, assets.subList(0, k).toArray(String[]::new)));
                    }
                }
            }
        }
        whole = treeOf(source).shapes();
        assertEquals(306, whole.size());
    }

    @AfterAll
    static void removeTree() {
        assertEquals(0, PHOTOS.nativeDeleteAlbum(source));
    }

    private static CollectionTree treeOf(String id) {
        return CollectionTree.of(level(null).stream().filter(one -> one.id().equals(id)).findAny()
                .orElseThrow());
    }

    private static List<Collection> topLevel() {
        return level(null).stream().filter(one -> !one.isSmart()).toList();
    }

    private static List<Collection> newAtTheTop(Set<String> before) {
        return topLevel().stream().filter(one -> !before.contains(one.id())).toList();
    }

    private static Set<String> idsAtTheTop() {
        return topLevel().stream().map(Collection::id).collect(Collectors.toSet());
    }

    /** That the library is one sound tree, here, in a new process and to SQLite. */
    private static void assertSound() throws IOException, InterruptedException {
        CollectionTree all = CollectionTree.below(null);
        try (OtherProcess other = OtherProcess.start("walk")) {
            assertEquals(List.of(all.digest()), other.answers());
        }
        if (Catalogue.isThere()) {
            Catalogue.assertSound(all.size());
        }
    }

    private static long millisecondsOf(String... task) throws IOException, InterruptedException {
        try (OtherProcess other = OtherProcess.start(task)) {
            long start = System.nanoTime();
            other.answers();
            return TimeUnit.NANOSECONDS.toMillis(System.nanoTime() - start);
        }
    }

    private static void killAfter(long milliseconds, String... task)
            throws IOException, InterruptedException {
        try (OtherProcess other = OtherProcess.start(task)) {
            Thread.sleep(milliseconds);
            other.kill();
        }
    }

    @Test
    void inADuplicationLeavesTheBeginningOfTheCopy() throws Exception {
        Set<String> before = idsAtTheTop();
        try (OtherProcess other = OtherProcess.start("duplicate", source)) {
            other.answers();
        }
        Collection complete = newAtTheTop(before).get(0);
        assertEquals(whole.subList(1, whole.size()), CollectionTree.of(complete).shapesInside());
        assertEquals(0, PHOTOS.nativeDeleteAlbum(complete.id()));

        long seed = System.nanoTime();
        Random random = new Random(seed);
        int inTheMiddle = 0;
        for (int round = 0; round < ROUNDS; ++round) {
            // Early, late and between, whatever the machine is like.
            int atLeast = random.nextInt(whole.size());
            try (OtherProcess other = OtherProcess.start("duplicate", source)) {
                while (sizeOf(newAtTheTop(before)) < atLeast) {
                    Thread.onSpinWait();
                }
                other.kill();
            }
            int made = assertBeginningOfTheCopy(
                    newAtTheTop(before), "killed from " + atLeast + " on, seed " + seed);
            if (made > 0 && made < whole.size()) {
                ++inTheMiddle;
            }
            for (Collection one : newAtTheTop(before)) {
                assertEquals(0, PHOTOS.nativeDeleteAlbum(one.id()));
            }
            assertEquals(whole, treeOf(source).shapes());
        }
        System.out.printf(
                "KilledProcessTest: %d of %d in the middle of a copy%n", inTheMiddle, ROUNDS);
        assertTrue(inTheMiddle > 0, "never killed in the middle, seed " + seed);
        assertSound();

        String copy = duplicate(source);
        assertEquals(whole.subList(1, whole.size()), treeOf(copy).shapesInside());
        newAtTheTop(before).forEach(one -> PHOTOS.nativeDeleteAlbum(one.id()));
        assertEquals(before, idsAtTheTop());
    }

    /** How many collections there are by now; others may be joining them. */
    private static int sizeOf(List<Collection> growing) {
        return growing.stream()
                .mapToInt(one -> 1 + (one.isFolder() ? sizeOf(level(one.id())) : 0)).sum();
    }

    /**
     * Each collection is made at the top level and then filed, one after the other: there is a
     * beginning of the copy and perhaps the next collection, not filed yet. Answers their number.
     */
    private static int assertBeginningOfTheCopy(List<Collection> found, String when) {
        if (found.isEmpty()) {
            return 0;
        }
        assertTrue(found.size() <= 2, when);
        CollectionTree copy = CollectionTree.of(found.get(0));
        assertEquals("Killed copy", found.get(0).title());
        List<Shape> inside = copy.shapesInside();
        assertEquals(whole.subList(1, copy.size()), inside, when);
        if (found.size() == 1) {
            return copy.size();
        }
        Shape next = whole.get(copy.size());
        Collection unfiled = found.get(1);
        assertEquals(next.title(), unfiled.title(), when);
        assertEquals(next.kind(), unfiled.kind(), when);
        assertEquals(unfiled.isFolder() ? 0 : next.assets().size(), unfiled.count(), when);
        assertEquals(next.assets(), unfiled.isFolder() ? List.of() : assetsIn(unfiled.id()), when);
        return copy.size() + 1;
    }

    @Test
    void inADeletionLeavesAllOrNothing() throws Exception {
        Set<String> before = idsAtTheTop();
        String victim = duplicate(source);
        long full = millisecondsOf("delete", victim);
        assertEquals(before, idsAtTheTop());
        Random random = new Random();
        int finished = 0;
        victim = duplicate(source);
        for (int round = 0; round < ROUNDS; ++round) {
            killAfter(random.nextLong(full + 1), "delete", victim);
            if (before.equals(idsAtTheTop())) {
                assertEquals("[]", PHOTOS.nativeListAlbums(victim));
                victim = duplicate(source);
                ++finished;
            }
            assertEquals(whole.subList(1, whole.size()), treeOf(victim).shapesInside());
        }
        System.out.printf("KilledProcessTest: %d of %d deletions done%n", finished, ROUNDS);
        assertEquals(0, PHOTOS.nativeDeleteAlbum(victim));
        assertSound();
    }
}
