package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.PHOTOS;
import static com.morrowfen.lumatrice.conformance.TestLibrary.assetWith;
import static com.morrowfen.lumatrice.conformance.TestLibrary.importFile;
import static com.morrowfen.lumatrice.conformance.TestLibrary.page;
import static com.morrowfen.lumatrice.conformance.TestLibrary.wholeLibrary;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.morrowfen.lumatrice.conformance.TestLibrary.Asset;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.FileTime;
import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

class ListingTest {
    private static final int OWN_ASSETS = 8;
    private static final List<String> OWN_IDS = new ArrayList<>();

    /** Assets a minute apart, the newest imported neither first nor last. */
    @BeforeAll
    static void importAssets(@TempDir Path folder) throws IOException {
        for (int i = 0; i < OWN_ASSETS; ++i) {
            Path file = TestFiles.picture(folder.resolve("listed" + i + ".png"), 8 + i, 8);
            int minute = (i * 3) % OWN_ASSETS;
            Files.setLastModifiedTime(file, FileTime.fromMillis(creationOf(minute)));
            OWN_IDS.add(importFile(file));
        }
    }

    private static long creationOf(int minute) {
        return 1_600_000_000_000L + minute * 60_000L;
    }

    @Test
    void isNewestFirst() {
        List<Asset> assets = wholeLibrary();
        for (int i = 1; i < assets.size(); ++i) {
            assertTrue(assets.get(i - 1).createdMs() >= assets.get(i).createdMs(), "at " + i);
        }
        List<Asset> own =
                assets.stream().filter(asset -> OWN_IDS.contains(asset.id())).toList();
        assertEquals(OWN_ASSETS, own.size());
        for (int i = 0; i < OWN_ASSETS; ++i) {
            assertEquals(creationOf(OWN_ASSETS - 1 - i), own.get(i).createdMs());
        }
    }

    @Test
    void countsWhatItLists() {
        assertEquals(PHOTOS.nativeAssetCount(), wholeLibrary().size());
    }

    @Test
    void pagesMakeUpTheWhole() {
        List<Asset> all = wholeLibrary();
        for (int size : new int[] {1, 3, all.size() - 1, all.size()}) {
            List<Asset> pages = new ArrayList<>();
            for (int offset = 0; offset < all.size(); offset += size) {
                pages.addAll(page(size, offset));
            }
            assertEquals(all, pages, "pages of " + size);
        }
    }

    @Test
    void clampsCountAndOffset() {
        int total = PHOTOS.nativeAssetCount();
        List<Asset> all = wholeLibrary();
        assertEquals(all.subList(0, 2), page(2, -7));
        assertEquals(all.subList(0, 2), page(2, Integer.MIN_VALUE));
        assertEquals(all.subList(total - 1, total), page(Integer.MAX_VALUE, total - 1));
        for (int[] empty : new int[][] {
            {0, 0}, {-1, 0}, {Integer.MIN_VALUE, 0}, {5, total}, {5, Integer.MAX_VALUE},
            {Integer.MAX_VALUE, Integer.MAX_VALUE}
        }) {
            assertEquals("[]", PHOTOS.nativeListAssets(empty[0], empty[1]));
        }
    }

    @Test
    void recordsHaveTheirFieldsInOrderWithoutWhitespace() {
        String id = OWN_IDS.get(0);
        int index = wholeLibrary().indexOf(assetWith(id));
        assertEquals("[{\"id\":\"" + id + "\",\"filename\":\"listed0.png\",\"isVideo\":false,"
                        + "\"width\":8,\"height\":8,\"createdMs\":1600000000000,"
                        + "\"isFavorite\":false}]",
                PHOTOS.nativeListAssets(1, index));
    }

    @Test
    void logsTheBoundsOfThePage() throws IOException {
        int total = PHOTOS.nativeAssetCount();
        PHOTOS.nativeListAssets(3, total + 10);
        String line = String.format("listAssets total=%1$d start=%1$d end=%1$d (auth=", total);
        assertTrue(TestLibrary.log().contains(line), line);
    }
}
