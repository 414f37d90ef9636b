package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.PHOTOS;
import static com.morrowfen.lumatrice.conformance.TestLibrary.assetWith;
import static com.morrowfen.lumatrice.conformance.TestLibrary.assetsIn;
import static com.morrowfen.lumatrice.conformance.TestLibrary.importPictures;
import static com.morrowfen.lumatrice.conformance.TestLibrary.level;
import static com.morrowfen.lumatrice.conformance.TestLibrary.newAlbum;
import static com.morrowfen.lumatrice.conformance.TestLibrary.newFolder;
import static com.morrowfen.lumatrice.conformance.TestLibrary.smartAlbum;
import static com.morrowfen.lumatrice.conformance.TestLibrary.titles;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotEquals;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import org.junit.jupiter.api.AfterAll;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Creating, renaming and deleting albums and folders, with the lines that each writes. */
class CollectionChangesTest {
    /** A line holds so many bytes at most. */
    private static final int LONGEST_LINE = 2047;

    /** 3,000 bytes, so that a line is cut within a character if it starts with an even number. */
    private static final String LONG_TITLE = "ü".repeat(1_500);

    private static final List<String> ASSETS = new ArrayList<>();
    private static String top;

    @BeforeAll
    static void importAssets(@TempDir Path files) throws IOException {
        ASSETS.addAll(importPictures(files, "kept", 3));
        top = newFolder("Changes", null);
    }

    @AfterAll
    static void removeTree() {
        assertEquals(0, PHOTOS.nativeDeleteAlbum(top));
    }

    /** Texts that count as no text at all. */
    private static List<String> missing() {
        List<String> texts = new ArrayList<>(List.of(CollectionListingTest.UNREADABLE));
        texts.add("");
        texts.add(null);
        return texts;
    }

    @Test
    void creationSaysWhatItMadeAndWhere() throws IOException {
        LogTail log = new LogTail();
        String folder = PHOTOS.nativeCreateFolder("Folder", top);
        String album = PHOTOS.nativeCreateAlbum("Album", folder);
        String again = PHOTOS.nativeCreateAlbum("Album", folder);
        log.assertMessages("created folder Folder (" + folder + ") parent=" + top,
                "created album Album (" + album + ") parent=" + folder,
                "created album Album (" + again + ") parent=" + folder);
        assertNotEquals(album, again);
        assertEquals(List.of("Album", "Album"), titles(folder));
        assertEquals(folder, PHOTOS.nativeParentCollection(again));
        assertEquals(List.of(), level(album));
        assertEquals(2, level(top).stream().filter(one -> one.id().equals(folder)).findAny()
                .orElseThrow().count());
    }

    @Test
    void withoutAParentItIsTheTopLevel() throws IOException {
        for (String parent : missing()) {
            LogTail log = new LogTail();
            String album = PHOTOS.nativeCreateAlbum(" ", parent);
            String folder = PHOTOS.nativeCreateFolder(" ", parent);
            log.assertMessages("created album   (" + album + ") parent=top level",
                    "created folder   (" + folder + ") parent=top level");
            List<String> ids = level(null).stream().filter(one -> !one.isSmart())
                    .map(TestLibrary.Collection::id).toList();
            assertEquals(List.of(album, folder), ids.subList(ids.size() - 2, ids.size()));
            assertEquals("", PHOTOS.nativeParentCollection(folder));
            assertEquals(" ", PHOTOS.nativeCollectionTitle(album));
            assertEquals(0, PHOTOS.nativeDeleteAlbum(album));
            assertEquals(0, PHOTOS.nativeDeleteAlbum(folder));
        }
    }

    @Test
    void withoutATitleNothingIsMade() throws IOException {
        String before = PHOTOS.nativeListAlbums(null);
        LogTail log = new LogTail();
        for (String title : missing()) {
            assertNull(PHOTOS.nativeCreateAlbum(title, null));
            assertNull(PHOTOS.nativeCreateAlbum(title, "unknown"));
            assertNull(PHOTOS.nativeCreateFolder(title, top));
        }
        log.assertMessages();
        assertEquals(before, PHOTOS.nativeListAlbums(null));
    }

    @Test
    void inAParentThatIsNoFolderNothingIsMade() throws IOException {
        String album = newAlbum("no parent", top);
        String[] noFolders = {
            "unknown", " ", "two\nlines", album, ASSETS.get(0), smartAlbum().id(),
            "00000000-0000-0000-0000-000000000000/L0/020"
        };
        String before = PHOTOS.nativeListAlbums(null);
        for (String parent : noFolders) {
            LogTail log = new LogTail();
            assertNull(PHOTOS.nativeCreateFolder("x", parent));
            log.assertMessages();
            assertNull(PHOTOS.nativeCreateAlbum("x", parent));
            log.assertMessages("create album: parent folder not found: " + parent);
        }
        assertEquals(before, PHOTOS.nativeListAlbums(null));
        assertEquals(0, PHOTOS.nativeDeleteAlbum(album));
    }

    @Test
    void aLongTitleIsKeptWholeAndItsLinesAreCut() throws IOException {
        assertEquals(3_000, LONG_TITLE.getBytes(StandardCharsets.UTF_8).length);
        LogTail log = new LogTail();
        String album = PHOTOS.nativeCreateAlbum(LONG_TITLE, top);
        log.assertCutMessage("created album " + LONG_TITLE, LONGEST_LINE);
        log = new LogTail();
        String folder = PHOTOS.nativeCreateFolder(LONG_TITLE, top);
        log.assertCutMessage("created folder " + LONG_TITLE, LONGEST_LINE);
        assertEquals(LONG_TITLE, PHOTOS.nativeCollectionTitle(album));
        assertEquals(LONG_TITLE, PHOTOS.nativeCollectionTitle(folder));
        log = new LogTail();
        assertEquals(0, PHOTOS.nativeRenameAlbum(album, "x" + LONG_TITLE));
        log.assertCutMessage("renamed album to 'x" + LONG_TITLE, LONGEST_LINE);
        assertEquals("x" + LONG_TITLE, PHOTOS.nativeCollectionTitle(album));
        String unknown = "y".repeat(1_000_000);
        log = new LogTail();
        assertNull(PHOTOS.nativeCreateAlbum("title", unknown));
        log.assertCutMessage("create album: parent folder not found: " + unknown, LONGEST_LINE);
        String huge = "z".repeat(1_000_000);
        assertEquals(0, PHOTOS.nativeRenameAlbum(folder, huge));
        assertEquals(huge, PHOTOS.nativeCollectionTitle(folder));
        assertEquals(0, PHOTOS.nativeDeleteAlbum(album));
        assertEquals(0, PHOTOS.nativeDeleteAlbum(folder));
    }

    @Test
    void renamingSaysWhatTheAlbumIsCalledNow() throws IOException {
        String folder = newFolder("before", top);
        String first = newAlbum("first", folder);
        newAlbum("second", folder);
        assertEquals(2, PHOTOS.nativeAddAssetsToAlbum(
                first, new String[] {ASSETS.get(0), ASSETS.get(1)}));
        LogTail log = new LogTail();
        for (String title : new String[] {
            "second", " ", "%s\n\"%n\" 'x'\\", "日本\u0001", "second", "first"
        }) {
            assertEquals(0, PHOTOS.nativeRenameAlbum(first, title));
            log.assertMessages("renamed album to '" + title + "'; Photos now reports '" + title
                    + "'");
            assertEquals(title, PHOTOS.nativeCollectionTitle(first));
            assertEquals(List.of(title, "second"), titles(folder));
            log = new LogTail();
        }
        assertEquals(0, PHOTOS.nativeRenameAlbum(folder, "after\n"));
        log.assertMessages();
        assertEquals("after\n", PHOTOS.nativeCollectionTitle(folder));
        assertEquals(List.of(ASSETS.get(1), ASSETS.get(0)), assetsIn(first));
        assertEquals(top, PHOTOS.nativeParentCollection(folder));
        assertEquals(0, PHOTOS.nativeDeleteAlbum(folder));
    }

    @Test
    void renamingStartsNothingWithoutACollectionAndATitle() throws IOException {
        String album = newAlbum("unchanged", top);
        LogTail log = new LogTail();
        for (String text : missing()) {
            assertEquals(-1, PHOTOS.nativeRenameAlbum(album, text));
            assertEquals(-1, PHOTOS.nativeRenameAlbum(top, text));
            assertEquals(-1, PHOTOS.nativeRenameAlbum(text, "x"));
            assertEquals(-1, PHOTOS.nativeRenameAlbum(text, text));
            assertEquals(-1, PHOTOS.nativeRenameAlbum(smartAlbum().id(), text));
            assertEquals(-1, PHOTOS.nativeDeleteAlbum(text));
        }
        for (String id : CollectionListingTest.UNKNOWN) {
            assertEquals(-1, PHOTOS.nativeRenameAlbum(id, "x"));
            assertEquals(-1, PHOTOS.nativeDeleteAlbum(id));
        }
        assertEquals(-1, PHOTOS.nativeRenameAlbum(ASSETS.get(0), "x"));
        assertEquals(-1, PHOTOS.nativeDeleteAlbum(ASSETS.get(0)));
        log.assertMessages();
        assertEquals("unchanged", PHOTOS.nativeCollectionTitle(album));
        assertEquals(0, PHOTOS.nativeDeleteAlbum(album));
    }

    @Test
    void smartAlbumsAreRefusedInSilence() throws IOException {
        String before = PHOTOS.nativeListAlbums(null);
        LogTail log = new LogTail();
        for (TestLibrary.Collection one : level(null)) {
            if (one.isSmart()) {
                assertEquals(-2, PHOTOS.nativeRenameAlbum(one.id(), "x"));
                assertEquals(-2, PHOTOS.nativeDeleteAlbum(one.id()));
            }
        }
        log.assertMessages();
        assertEquals(before, PHOTOS.nativeListAlbums(null));
    }

    @Test
    void deletionTakesACollectionAndNoAsset() throws IOException {
        String folder = newFolder("gone", top);
        String sibling = newAlbum("stays", top);
        String inner = newFolder("inner", folder);
        String album = newAlbum("album", inner);
        String[] assets = ASSETS.toArray(String[]::new);
        assertEquals(3, PHOTOS.nativeAddAssetsToAlbum(album, assets));
        assertEquals(3, PHOTOS.nativeAddAssetsToAlbum(sibling, assets));
        int before = PHOTOS.nativeAssetCount();
        LogTail log = new LogTail();
        assertEquals(0, PHOTOS.nativeDeleteAlbum(folder));
        for (String id : Arrays.asList(folder, inner, album)) {
            assertNull(PHOTOS.nativeCollectionTitle(id));
            assertEquals("[]", PHOTOS.nativeListAlbums(id));
            assertEquals(-1, PHOTOS.nativeDeleteAlbum(id));
            assertEquals(-1, PHOTOS.nativeRenameAlbum(id, "x"));
        }
        assertNull(PHOTOS.nativeCreateFolder("x", inner));
        assertEquals(-1, PHOTOS.nativeAddAssetsToAlbum(album, assets));
        log.assertMessages();
        assertEquals(before, PHOTOS.nativeAssetCount());
        assertNotNull(assetWith(assets[0]));
        assertEquals(3, assetsIn(sibling).size());
        assertEquals(0, PHOTOS.nativeDeleteAlbum(sibling));
        assertTrue(level(top).stream().noneMatch(one -> one.id().equals(sibling)));
        assertEquals(before, PHOTOS.nativeAssetCount());
    }
}
