package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.PHOTOS;
import static com.morrowfen.lumatrice.conformance.TestLibrary.assetWith;
import static com.morrowfen.lumatrice.conformance.TestLibrary.assetsIn;
import static com.morrowfen.lumatrice.conformance.TestLibrary.importPictures;
import static com.morrowfen.lumatrice.conformance.TestLibrary.newAlbum;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.nio.file.Path;
import java.util.List;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Marks, deletion, and the attribute copy. */
class AssetChangesTest {
    private static final String EMOJI = "\uD83D\uDE00";

    @TempDir Path folder;

    private static String[] array(String... ids) {
        return ids;
    }

    private static boolean isListed(String asset) {
        return TestLibrary.wholeLibrary().stream().anyMatch(listed -> listed.id().equals(asset));
    }

    @Test
    void favoritesAreSetAndCountedWhateverTheyWere() throws IOException {
        List<String> ids = importPictures(folder, "favorite", 3);
        assertEquals(2, PHOTOS.nativeSetFavorite(
                array(ids.get(0), null, "unknown", ids.get(1), ids.get(1), EMOJI), true));
        assertEquals(3, PHOTOS.nativeSetFavorite(ids.toArray(new String[0]), true));
        for (String id : ids) {
            assertTrue(assetWith(id).isFavorite());
        }
        assertEquals(1, PHOTOS.nativeSetFavorite(array(ids.get(2)), false));
        assertFalse(assetWith(ids.get(2)).isFavorite());
        for (String[] nothing : new String[][] {null, {}, {null}, {"unknown"}, {EMOJI}, {""}}) {
            assertEquals(-1, PHOTOS.nativeSetFavorite(nothing, true));
            assertEquals(-1, PHOTOS.nativeSetHidden(nothing, true));
            assertEquals(-1, PHOTOS.nativeDeleteAssets(nothing));
        }
    }

    @Test
    void hiddenAssetsLeaveTheListingsButKeepTheirPlace() throws IOException {
        List<String> ids = importPictures(folder, "hidden", 3);
        String album = newAlbum("Hiding", null);
        PHOTOS.nativeAddAssetsToAlbum(album, ids.toArray(new String[0]));
        int before = PHOTOS.nativeAssetCount();
        assertEquals(1, PHOTOS.nativeSetHidden(array(ids.get(1)), true));
        assertEquals(before - 1, PHOTOS.nativeAssetCount());
        assertFalse(isListed(ids.get(1)));
        assertEquals(List.of(ids.get(2), ids.get(0)), assetsIn(album));
        assertEquals(0, PHOTOS.nativeAlbumContainsAsset(album, ids.get(1)));
        assertEquals(1, PHOTOS.nativeSetFavorite(array(ids.get(1)), true));
        assertEquals(1, PHOTOS.nativeSetHidden(array(ids.get(1)), false));
        assertEquals(List.of(ids.get(2), ids.get(1), ids.get(0)), assetsIn(album));
        assertTrue(assetWith(ids.get(1)).isFavorite());
    }

    @Test
    void deletedAssetsAreNowhere() throws IOException {
        List<String> ids = importPictures(folder, "deleted", 2);
        String album = newAlbum("Deleting", null);
        PHOTOS.nativeAddAssetsToAlbum(album, ids.toArray(new String[0]));
        LogTail log = new LogTail();
        assertEquals(1, PHOTOS.nativeDeleteAssets(array("unknown", ids.get(0))));
        log.assertMessages("deleted 1 asset(s)");
        assertFalse(isListed(ids.get(0)));
        assertEquals(List.of(ids.get(1)), assetsIn(album));
        assertEquals(-1, PHOTOS.nativeDeleteAssets(array(ids.get(0))));
        assertEquals(-1, PHOTOS.nativeSetFavorite(array(ids.get(0)), true));
        assertEquals(-1, PHOTOS.nativeExportToFile(ids.get(0), folder + "/x", 1));
    }

    @Test
    void attributesAreCopiedToTheTarget() throws IOException {
        List<String> ids = importPictures(folder, "copied", 3);
        String first = newAlbum("First", null);
        String second = newAlbum("Second", TestLibrary.newFolder("Inside", null));
        PHOTOS.nativeAddAssetsToAlbum(first, array(ids.get(0), ids.get(1)));
        PHOTOS.nativeAddAssetsToAlbum(second, array(ids.get(0)));
        PHOTOS.nativeSetFavorite(array(ids.get(0)), true);
        PHOTOS.nativeSetHidden(array(ids.get(0)), true); // a hidden source counts all the same

        assertEquals(2, PHOTOS.nativeCopyAssetAttributes(ids.get(0), ids.get(1)));
        assertTrue(assetWith(ids.get(1)).isFavorite());
        assertEquals(List.of(ids.get(1)), assetsIn(first));
        assertEquals(List.of(ids.get(1)), assetsIn(second));

        // Nothing is ever taken away, and an asset in no album gives none.
        assertEquals(0, PHOTOS.nativeCopyAssetAttributes(ids.get(2), ids.get(1)));
        assertTrue(assetWith(ids.get(1)).isFavorite());
        for (String bad : new String[] {null, "unknown", EMOJI, first}) {
            assertEquals(-1, PHOTOS.nativeCopyAssetAttributes(bad, ids.get(1)));
            assertEquals(-1, PHOTOS.nativeCopyAssetAttributes(ids.get(1), bad));
        }
    }
}
