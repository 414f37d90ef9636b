package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.*;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.concurrent.FutureTask;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Every method once, on a thread with as little stack as the JVM itself can do with. */
class RoundTripTest {
    @TempDir Path folder;

    @Test
    void everyMethodAnswersOnASmallStack() throws Exception {
        FutureTask<Void> calls = new FutureTask<>(this::useAssets);
        new Thread(null, calls, "small", 128 << 10).start();
        calls.get();
    }

    private Void useAssets() throws IOException {
        assertEquals(1, PHOTOS.nativeAuthorize());
        Path file = picture(folder.resolve("a.jpg"), 60, 40);
        String missing = folder.resolve("missing").toString();
        String[] both = PHOTOS.nativeImportAssets(new String[] {file.toString(), missing,
            null, picture(folder.resolve("b.png"), 8, 9).toString()});
        assertEquals(3, both.length);
        assertNull(both[1]);
        String id = made(both[0]);
        String other = made(both[2]);
        assertEquals(2, PHOTOS.nativeAssetCount());
        List<Asset> all = assets(PHOTOS.nativeListAssets(5, 0));
        assertEquals(all.subList(1, 2), assets(PHOTOS.nativeListAssets(5, 1)));
        assertEquals(all.subList(0, 1), assets(PHOTOS.nativeListAssets(1, 0)));

        String outer = made(PHOTOS.nativeCreateFolder("outer", null));
        String album = made(PHOTOS.nativeCreateAlbum("album", outer));
        assertEquals(outer, PHOTOS.nativeParentCollection(album));
        assertEquals(2, PHOTOS.nativeAddAssetsToAlbum(album, both));
        assertEquals(List.of(new Collection(album, "album", "album", 2L)), level(outer));
        assertEquals(1, PHOTOS.nativeRemoveAssetsFromAlbum(album, new String[] {other}));
        assertEquals(0, PHOTOS.nativeAlbumContainsAsset(album, other));
        assertEquals(1, PHOTOS.nativeSetFavorite(new String[] {id}, true));
        assertEquals(1, PHOTOS.nativeCopyAssetAttributes(id, other));
        assertEquals(1, PHOTOS.nativeAlbumContainsAsset(album, other));
        assertEquals(1, PHOTOS.nativeSetFavorite(new String[] {id}, false));
        assertEquals(1, PHOTOS.nativeSetHidden(new String[] {id}, true));
        List<Asset> held = assets(PHOTOS.nativeListAlbumAssets(album, 3, 0));
        assertEquals(1, held.size());
        assertEquals(new Asset(other, "b.png", false, 8L, 9L, held.get(0).createdMs(), true, false),
                held.get(0));
        assertEquals("[]", PHOTOS.nativeListAlbumAssets(album, 3, 1));
        assertEquals(1, PHOTOS.nativeSetHidden(new String[] {id}, false));

        assertEquals(0, PHOTOS.nativeRenameAlbum(outer, "renamed"));
        assertEquals("renamed", PHOTOS.nativeCollectionTitle(outer));
        String copy = made(PHOTOS.nativeDuplicateCollection(outer));
        assertEquals(2, level(copy).get(0).count());
        assertEquals(0, PHOTOS.nativeDeleteAlbum(copy));
        assertNull(PHOTOS.nativeCollectionTitle(copy));
        useFiles(id, file);
        assertEquals(2, PHOTOS.nativeDeleteAssets(both));
        assertEquals(0, PHOTOS.nativeAssetCount());
        return null;
    }

    private void useFiles(String id, Path file) throws IOException {
        Path out = folder.resolve("made/out.jpg");
        PHOTOS.nativeCancelExport(4711);
        assertEquals(0, PHOTOS.nativeExportToFile(id, out.toString(), 4711));
        assertEquals(-1, Files.mismatch(file, out));
        Path rendered = picture(folder.resolve("rendered.jpg"), 30, 50);
        assertEquals(0, PHOTOS.nativeApplyEdit(id, rendered.toString()));
        assertEquals(0, PHOTOS.nativeExportToFile(id, out.toString(), 4711));
        assertEquals(-1, Files.mismatch(rendered, out));
        assertEquals(0, PHOTOS.nativeContentEditingImage(id, out.toString()));
        assertEquals(-1, Files.mismatch(file, out));
        assertJpeg(PHOTOS.nativeRequestThumbnail(id, 20, 10));
        assertNull(PHOTOS.nativeRequestThumbnail("unknown", 20, 10));
    }
}
