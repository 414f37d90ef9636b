package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.*;
import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;

import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** What crosses between the JVM and the library: text, long arrays, deep trees. */
class CollectionsTest {
    private static final int DEEP = 1_000;

    @TempDir Path folder;

    @Test
    void textArrivesAsItIsOrNotAtAll() {
        for (String title : List.of("Übersicht – 日本", "\u0001\b\n\r\t\u001F\u007F\"\\", "\u2028\uFFFD",
                "ü".repeat(500_000), " ")) {
            String album = made(PHOTOS.nativeCreateAlbum(title, "\0"));
            assertEquals(title, PHOTOS.nativeCollectionTitle(album));
            assertEquals(title, level(null).get(0).title());
            assertEquals("", PHOTOS.nativeParentCollection(album));
            assertEquals(0, PHOTOS.nativeDeleteAlbum(album));
        }
        String album = made(PHOTOS.nativeCreateAlbum("kept", "\uD83D\uDE00"));
        for (String none : new String[] {null, "", "a\0b", "\uD83D\uDE00", "lone \uD800"}) {
            assertNull(PHOTOS.nativeCreateFolder(none, null));
            assertEquals(-1, PHOTOS.nativeRenameAlbum(album, none));
        }
        assertEquals("kept", PHOTOS.nativeCollectionTitle(album));
    }

    @Test
    void arraysMayBeLongerThanTheLocalReferenceTable() throws Exception {
        String[] paths = new String[5_000];
        Arrays.fill(paths, folder.resolve("nothing here").toString());
        paths[4_999] = picture(folder.resolve("ü".repeat(125) + "x.png"), 8, 8).toString();
        String[] imported = PHOTOS.nativeImportAssets(paths);
        String asset = made(imported[4_999]);
        assertArrayEquals(new String[4_999], Arrays.copyOf(imported, 4_999));
        assertEquals("ü".repeat(125) + "x.png",
                assets(PHOTOS.nativeListAssets(1, 0)).get(0).filename());

        String[] many = new String[20_000];
        for (int i = 0; i < many.length; ++i) {
            many[i] = String.format("%08X-0000-0000-0000-000000000000/L0/001", i);
        }
        many[19_000] = asset;
        String album = made(PHOTOS.nativeCreateAlbum("many", null));
        assertEquals(1, PHOTOS.nativeAddAssetsToAlbum(album, many));
        assertEquals(1, PHOTOS.nativeAlbumContainsAsset(album, asset));
        assertEquals(1, PHOTOS.nativeSetFavorite(many, true));
        assertEquals(1, PHOTOS.nativeSetHidden(many, true));
        assertEquals(1, PHOTOS.nativeRemoveAssetsFromAlbum(album, many));
        assertEquals(1, PHOTOS.nativeDeleteAssets(many));
    }

    @Test
    void foldersMayLieDeep() {
        String top = made(PHOTOS.nativeCreateFolder("top", null));
        String inner = top;
        for (int i = 1; i < DEEP; ++i) {
            inner = made(PHOTOS.nativeCreateFolder("inner", inner));
        }
        String copy = made(PHOTOS.nativeDuplicateCollection(top));
        int depth = 0;
        for (String at = copy; at != null; ++depth) {
            List<Collection> below = level(at);
            at = below.isEmpty() ? null : below.get(0).id();
        }
        assertEquals(DEEP, depth);
        assertEquals(0, PHOTOS.nativeDeleteAlbum(copy));
        assertEquals(0, PHOTOS.nativeDeleteAlbum(top));
        assertNull(PHOTOS.nativeCollectionTitle(inner));
    }
}
