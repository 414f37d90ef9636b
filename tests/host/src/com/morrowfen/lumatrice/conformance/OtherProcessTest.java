package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.*;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.lang.management.ManagementFactory;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** A second JVM, or the owner's tool, on the library that this process has open. */
class OtherProcessTest {
    private static final int ALBUMS = 100;

    @TempDir Path folder;

    /** The second JVM: fills a folder, or copies one. */
    public static void main(String[] task) {
        if (task[0].equals("fill")) {
            fill(task[1], "theirs");
        } else {
            made(PHOTOS.nativeDuplicateCollection(task[1]));
        }
    }

    private static void fill(String parent, String name) {
        for (int i = 0; i < ALBUMS; ++i) {
            String album = made(PHOTOS.nativeCreateAlbum("new", parent));
            assertEquals(0, PHOTOS.nativeRenameAlbum(album, name + i));
        }
    }

    private static Process start(String... task) throws IOException {
        List<String> command = new ArrayList<>();
        command.add(Path.of(System.getProperty("java.home"), "bin", "java").toString());
        command.addAll(ManagementFactory.getRuntimeMXBean().getInputArguments());
        command.addAll(List.of("-cp", System.getProperty("java.class.path"),
                OtherProcessTest.class.getName()));
        command.addAll(List.of(task));
        return new ProcessBuilder(command).inheritIO().start();
    }

    @Test
    void bothKeepWhatTheyMakeAndAKilledOneLeavesASoundLibrary() throws Exception {
        String shared = made(PHOTOS.nativeCreateFolder("shared", null));
        Process other = start("fill", shared);
        fill(shared, "ours");
        assertEquals(0, other.waitFor());
        List<String> titles = level(shared).stream().map(Collection::title).toList();
        for (int i = 0; i < ALBUMS; ++i) {
            assertTrue(titles.contains("ours" + i) && titles.contains("theirs" + i), "" + i);
        }
        assertEquals(2 * ALBUMS, titles.size());

        Process killed = start("copy", shared);
        while (killed.isAlive() && level(null).size() == 1) {
            Thread.onSpinWait();
        }
        killed.destroyForcibly().waitFor();
        assertTrue(level(null).size() > 1, "it had begun the copy");
        assertEquals(titles, level(shared).stream().map(Collection::title).toList());
        String copy = made(PHOTOS.nativeDuplicateCollection(shared));
        assertEquals(2 * ALBUMS, level(copy).size());
        tool(0, "verify");
    }

    @Test
    void whatTheOwnersToolDoesHoldsAtOnce() throws Exception {
        String chosen = importFile(picture(folder.resolve("a.jpg"), 60, 40));
        String other = importFile(picture(folder.resolve("b.jpg"), 60, 40));
        tool(0, "access", "limited", chosen);
        assertEquals(2, PHOTOS.nativeAuthorize());
        assertNull(PHOTOS.nativeRequestThumbnail(other, 20, 20));
        assertEquals(1, PHOTOS.nativeAssetCount());
        tool(0, "access", "denied");
        assertEquals(0, PHOTOS.nativeAuthorize());
        assertEquals(0, PHOTOS.nativeAssetCount());
        tool(0, "access", "full");
        assertEquals(1, PHOTOS.nativeDeleteAssets(new String[] {chosen}));
        assertEquals(1, PHOTOS.nativeAssetCount());
        tool(0, "trash", "restore", chosen);
        assertEquals(2, PHOTOS.nativeAssetCount());
        tool(1, "trash", "restore", chosen);
    }
}
