package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.PHOTOS;
import static com.morrowfen.lumatrice.conformance.TestLibrary.assetsIn;
import static com.morrowfen.lumatrice.conformance.TestLibrary.importPictures;
import static com.morrowfen.lumatrice.conformance.TestLibrary.level;
import static com.morrowfen.lumatrice.conformance.TestLibrary.newAlbum;
import static com.morrowfen.lumatrice.conformance.TestLibrary.newFolder;
import static com.morrowfen.lumatrice.conformance.TestLibrary.smartAlbum;
import static org.junit.jupiter.api.Assertions.assertEquals;

import java.io.IOException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import org.junit.jupiter.api.AfterAll;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Putting assets into albums and taking them out, which never writes a line when it works. */
class AlbumMembershipTest {
    private static final List<String> ASSETS = new ArrayList<>();
    private static String top;

    private String album;
    private LogTail log;

    @BeforeAll
    static void importAssets(@TempDir Path files) throws IOException {
        ASSETS.addAll(importPictures(files, "member", 4));
        top = newFolder("Membership", null);
    }

    @AfterAll
    static void removeTree() {
        assertEquals(0, PHOTOS.nativeDeleteAlbum(top));
    }

    @BeforeEach
    void makeAlbum() throws IOException {
        album = newAlbum("Album", top);
        log = new LogTail();
    }

    @AfterEach
    void isSilent() throws IOException {
        log.assertMessages();
    }

    private int add(String... assets) {
        return PHOTOS.nativeAddAssetsToAlbum(album, assets);
    }

    private int remove(String... assets) {
        return PHOTOS.nativeRemoveAssetsFromAlbum(album, assets);
    }

    private void assertHolds(String... newestFirst) {
        assertEquals(List.of(newestFirst), assetsIn(album));
        long count = level(top).stream().filter(one -> one.id().equals(album)).findAny()
                .orElseThrow().count();
        assertEquals(newestFirst.length, count);
        for (String asset : ASSETS) {
            assertEquals(List.of(newestFirst).contains(asset) ? 1 : 0,
                    PHOTOS.nativeAlbumContainsAsset(album, asset));
        }
    }

    @Test
    void countsWhatWasFoundNotWhatIsNew() {
        String[] a = ASSETS.toArray(String[]::new);
        assertEquals(2, add(a[0], a[2]));
        assertHolds(a[2], a[0]);
        assertEquals(3, add(a[2], a[3], a[0]), "two of them are in it");
        assertHolds(a[3], a[2], a[0]);
        assertEquals(1, add(a[1], a[1], a[1]), "the same asset counts once");
        assertHolds(a[3], a[2], a[1], a[0]);
        assertEquals(2, remove(a[2], a[0]));
        assertEquals(2, remove(a[2], a[3]), "one of them is not in it");
        assertHolds(a[1]);
        assertEquals(1, remove(a[1]));
        assertHolds();
        assertEquals(1, remove(a[1]));
    }

    @Test
    void leavesOutWhatNamesNoAsset() {
        String[] a = ASSETS.toArray(String[]::new);
        assertEquals(2, add(null, "unknown", a[1], "", album, "\uD83D\uDE00", top, a[0], null));
        assertHolds(a[1], a[0]);
        assertEquals(1, remove("\0", null, a[0], "00000000-0000-0000-0000-000000000000/L0/001"));
        assertHolds(a[1]);
    }

    @Test
    void startsNothingWithoutAnAlbumAndAnAsset() {
        String[] one = {ASSETS.get(0)};
        List<String> noAlbums =
                new ArrayList<>(Arrays.asList(null, "", "unknown", top, ASSETS.get(0)));
        noAlbums.addAll(List.of(CollectionListingTest.UNREADABLE));
        for (String id : noAlbums) {
            assertEquals(-1, PHOTOS.nativeAddAssetsToAlbum(id, one), id);
            assertEquals(-1, PHOTOS.nativeRemoveAssetsFromAlbum(id, one), id);
        }
        for (String[] none : new String[][] {
            null, {}, {null}, {null, null, null}, {""}, {"unknown", null}, {album}, {top},
            {"\uD83D\uDE00"}, {"\0"}
        }) {
            assertEquals(-1, PHOTOS.nativeAddAssetsToAlbum(album, none));
            assertEquals(-1, PHOTOS.nativeRemoveAssetsFromAlbum(album, none));
        }
        assertHolds();
    }

    @Test
    void refusesSmartAlbums() {
        String smart = smartAlbum().id();
        int before = assetsIn(smart).size();
        for (String asset : new String[] {ASSETS.get(0), "unknown"}) {
            assertEquals(-2, PHOTOS.nativeAddAssetsToAlbum(smart, new String[] {asset}));
            assertEquals(-2, PHOTOS.nativeRemoveAssetsFromAlbum(smart, new String[] {asset}));
        }
        assertEquals(-1, PHOTOS.nativeAddAssetsToAlbum(smart, new String[] {null}));
        assertEquals(before, assetsIn(smart).size());
    }

    @Test
    void takesArraysLongerThanTheLocalReferenceTable() {
        String[] many = new String[20_000];
        for (int i = 0; i < many.length; ++i) {
            many[i] = String.format("%08X-0000-0000-0000-000000000000/L0/001", i);
        }
        assertEquals(-1, PHOTOS.nativeAddAssetsToAlbum(album, many));
        many[19_000] = ASSETS.get(3);
        many[17] = ASSETS.get(1);
        assertEquals(2, PHOTOS.nativeAddAssetsToAlbum(album, many));
        assertHolds(ASSETS.get(3), ASSETS.get(1));
        assertEquals(2, PHOTOS.nativeRemoveAssetsFromAlbum(album, many));
        assertHolds();
    }
}
