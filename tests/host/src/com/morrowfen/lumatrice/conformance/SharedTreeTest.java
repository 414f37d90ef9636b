package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.PHOTOS;
import static com.morrowfen.lumatrice.conformance.TestLibrary.level;
import static com.morrowfen.lumatrice.conformance.TestLibrary.newFolder;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.morrowfen.lumatrice.conformance.TestLibrary.Collection;
import java.util.ArrayList;
import java.util.List;
import java.util.Set;
import java.util.concurrent.CompletableFuture;
import java.util.concurrent.TimeUnit;
import java.util.stream.Collectors;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.Timeout;

/**
 * Two processes create, rename, copy and delete in one tree at once, and this one watches. The
 * system property {@code photos.together.seconds} says for how long.
 */
class SharedTreeTest {
    private static final int SECONDS = Integer.getInteger("photos.together.seconds", 5);
    private static final int PROCESSES = 2;

    /** Either process, with what it answered. */
    private static CompletableFuture<List<String>> answersOf(OtherProcess process) {
        return CompletableFuture.supplyAsync(() -> {
            try {
                return process.answers();
            } catch (Exception failure) {
                throw new IllegalStateException(failure);
            }
        });
    }

    @Test
    @Timeout(600)
    void staysOneTreeAndKeepsWhatWasMade() throws Exception {
        Set<String> before = level(null).stream().map(Collection::id).collect(Collectors.toSet());
        String shared = newFolder("Shared", null);
        String kept = newFolder("Kept", null);
        List<OtherProcess> processes = new ArrayList<>();
        List<CompletableFuture<List<String>>> answers = new ArrayList<>();
        long seed = System.nanoTime();
        System.out.println("SharedTreeTest: seed " + seed);
        try {
            for (int i = 0; i < PROCESSES; ++i) {
                processes.add(OtherProcess.start("organise", shared, kept,
                        Long.toString(seed + i), Long.toString(SECONDS * 1_000L)));
                answers.add(answersOf(processes.get(i)));
            }
            CompletableFuture<Void> all =
                    CompletableFuture.allOf(answers.toArray(CompletableFuture[]::new));
            while (!all.isDone()) {
                watch(shared);
                TimeUnit.MILLISECONDS.sleep(20);
            }
        } finally {
            processes.forEach(OtherProcess::close);
        }
        CollectionTree whole = CollectionTree.below(null);
        Set<String> found = whole.collections().stream()
                .map(one -> Organiser.line(one.id(), one.title(),
                        PHOTOS.nativeParentCollection(one.id())))
                .collect(Collectors.toSet());
        for (CompletableFuture<List<String>> one : answers) {
            List<String> lines = one.join();
            System.out.println("SharedTreeTest: " + lines.get(0) + " steps");
            assertTrue(Integer.parseInt(lines.get(0)) > 10, lines.get(0) + " steps");
            assertTrue(lines.size() > 1);
            for (String line : lines.subList(1, lines.size())) {
                assertTrue(found.contains(line), "lost: " + line);
            }
        }
        if (Catalogue.isThere()) {
            Catalogue.assertSound(whole.size());
        }
        removeAllBut(before);
    }

    /** Whatever the moment, a listing is complete JSON, and its collections answer. */
    private static void watch(String folder) {
        for (Collection one : level(folder)) {
            PHOTOS.nativeParentCollection(one.id());
            if (one.isFolder()) {
                watch(one.id());
            }
        }
    }

    /** What lost its folder between its making and its filing lies at the top level. */
    private static void removeAllBut(Set<String> before) {
        for (Collection one : level(null)) {
            if (!one.isSmart() && !before.contains(one.id())) {
                assertEquals(0, PHOTOS.nativeDeleteAlbum(one.id()));
            }
        }
    }
}
