package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.PHOTOS;
import static com.morrowfen.lumatrice.conformance.TestLibrary.albumPage;
import static com.morrowfen.lumatrice.conformance.TestLibrary.assetsIn;
import static com.morrowfen.lumatrice.conformance.TestLibrary.createdOf;
import static com.morrowfen.lumatrice.conformance.TestLibrary.duplicate;
import static com.morrowfen.lumatrice.conformance.TestLibrary.importPictures;
import static com.morrowfen.lumatrice.conformance.TestLibrary.level;
import static com.morrowfen.lumatrice.conformance.TestLibrary.newAlbum;
import static com.morrowfen.lumatrice.conformance.TestLibrary.newFolder;
import static com.morrowfen.lumatrice.conformance.TestLibrary.smartAlbum;
import static com.morrowfen.lumatrice.conformance.TestLibrary.titles;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;
import static org.junit.jupiter.api.Assumptions.assumeTrue;

import com.morrowfen.lumatrice.conformance.TestLibrary.Asset;
import com.morrowfen.lumatrice.conformance.TestLibrary.Collection;
import java.io.IOException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.AfterAll;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.MethodSource;
import org.junit.jupiter.params.provider.ValueSource;

/** The tree of albums, their pages, and the questions about one of them. */
class CollectionListingTest {
    /** Identifiers that name nothing, whatever is asked for. */
    static final String[] UNKNOWN = {
        "no such collection", " ", "%s", "'; DROP TABLE collection; --",
        "00000000-0000-0000-0000-000000000000/L0/040",
        "00000000-0000-0000-0000-000000000000/L0/020",
        "00000000-0000-0000-0000-000000000999/L0/040", "/L0/020", "x".repeat(1_000_000)
    };

    /** Texts that cannot cross: outside the Basic Multilingual Plane, half of a pair, NUL. */
    static final String[] UNREADABLE = {
        "\uD83D\uDE00", "smile \uD83D\uDE00 there", "\uD83D", "\uDE00 back", "\0", "before\0after"
    };

    private static final List<String> ASSETS = new ArrayList<>();
    private static String top;
    private static String album;
    private static String folder;
    private static String inner;
    private static String empty;

    @BeforeAll
    static void makeTree(@TempDir Path files) throws IOException {
        ASSETS.addAll(importPictures(files, "held", 5));
        top = newFolder("Listing", null);
        album = newAlbum("Album", top);
        folder = newFolder("Folder", top);
        empty = newAlbum("Empty", top);
        inner = newFolder("Inner", folder);
        newAlbum("First", folder);
        newAlbum("Second", folder);
        newAlbum("Innermost", inner);
        String[] unordered = {ASSETS.get(3), ASSETS.get(0), ASSETS.get(4), ASSETS.get(1)};
        assertEquals(4, PHOTOS.nativeAddAssetsToAlbum(album, unordered));
    }

    @AfterAll
    static void removeTree() {
        assertEquals(0, PHOTOS.nativeDeleteAlbum(top));
    }

    static String[] unknown() {
        return UNKNOWN;
    }

    static String[] unreadable() {
        return UNREADABLE;
    }

    @Test
    void aLevelIsOneRecordForEachChildInOrder() throws IOException {
        LogTail log = new LogTail();
        assertEquals("[{\"id\":\"" + album
                        + "\",\"title\":\"Album\",\"kind\":\"album\",\"count\":4},"
                        + "{\"id\":\"" + folder
                        + "\",\"title\":\"Folder\",\"kind\":\"folder\",\"count\":3},"
                        + "{\"id\":\"" + empty
                        + "\",\"title\":\"Empty\",\"kind\":\"album\",\"count\":0}]",
                PHOTOS.nativeListAlbums(top));
        assertEquals(List.of("Inner", "First", "Second"), titles(folder));
        assertEquals(List.of("Innermost"), titles(inner));
        log.assertMessages();
    }

    @Test
    void theTopLevelEndsWithTheSmartAlbumsThatHoldAnything() {
        String whole = PHOTOS.nativeListAlbums(null);
        assertEquals(whole, PHOTOS.nativeListAlbums(""));
        for (String text : UNREADABLE) {
            assertEquals(whole, PHOTOS.nativeListAlbums(text));
        }
        List<Collection> all = level(null);
        long ofTheUser = all.stream().takeWhile(one -> !one.isSmart()).count();
        assertTrue(ofTheUser > 0);
        assertTrue(all.size() > ofTheUser);
        for (Collection one : all.subList((int) ofTheUser, all.size())) {
            assertTrue(one.isSmart(), "after smart albums: " + one);
            assertTrue(one.count() > 0, one.title());
            List<String> held = assetsIn(one.id());
            assertEquals(one.count(), held.size(), one.title());
            assertEquals(one.title(), PHOTOS.nativeCollectionTitle(one.id()));
            assertEquals("", PHOTOS.nativeParentCollection(one.id()));
            assertEquals(1, PHOTOS.nativeAlbumContainsAsset(one.id(), held.get(0)));
        }
        assertTrue(all.stream().anyMatch(one -> one.count() == PHOTOS.nativeAssetCount()));
    }

    @ParameterizedTest
    @MethodSource("unknown")
    void anUnknownIdentifierIsNothing(String id) throws IOException {
        LogTail log = new LogTail();
        assertEquals("[]", PHOTOS.nativeListAlbums(id));
        assertEquals("[]", PHOTOS.nativeListAlbumAssets(id, 10, 0));
        assertEquals("", PHOTOS.nativeParentCollection(id));
        assertNull(PHOTOS.nativeCollectionTitle(id));
        assertEquals(-1, PHOTOS.nativeAlbumContainsAsset(id, ASSETS.get(0)));
        assertEquals(0, PHOTOS.nativeAlbumContainsAsset(album, id));
        log.assertMessages();
    }

    @Test
    void theWrongKindIsNothing() {
        for (String id : new String[] {album, ASSETS.get(0), smartAlbum().id()}) {
            assertEquals("[]", PHOTOS.nativeListAlbums(id), id);
        }
        for (String id : new String[] {folder, ASSETS.get(0), ""}) {
            assertEquals("[]", PHOTOS.nativeListAlbumAssets(id, 10, 0), id);
            assertEquals(-1, PHOTOS.nativeAlbumContainsAsset(id, ASSETS.get(0)), id);
        }
        assertEquals("", PHOTOS.nativeParentCollection(ASSETS.get(0)));
        assertNull(PHOTOS.nativeCollectionTitle(ASSETS.get(0)));
        assertEquals(0, PHOTOS.nativeAlbumContainsAsset(album, folder));
        assertEquals(0, PHOTOS.nativeAlbumContainsAsset(album, ""));
    }

    @Test
    void missingTextIsNothing() {
        List<String> missing = new ArrayList<>(List.of(UNREADABLE));
        missing.add(null);
        for (String text : missing) {
            assertEquals("[]", PHOTOS.nativeListAlbumAssets(text, 10, 0));
            assertEquals("", PHOTOS.nativeParentCollection(text));
            assertNull(PHOTOS.nativeCollectionTitle(text));
            assertEquals(-1, PHOTOS.nativeAlbumContainsAsset(text, ASSETS.get(0)));
            assertEquals(-1, PHOTOS.nativeAlbumContainsAsset(album, text));
            assertEquals(-1, PHOTOS.nativeAlbumContainsAsset(text, text));
        }
    }

    @Test
    void oneCollectionTellsItsParentItsTitleAndItsAssets() throws IOException {
        LogTail log = new LogTail();
        assertEquals("", PHOTOS.nativeParentCollection(top));
        assertEquals(top, PHOTOS.nativeParentCollection(album));
        assertEquals(top, PHOTOS.nativeParentCollection(folder));
        assertEquals(inner, PHOTOS.nativeParentCollection(level(inner).get(0).id()));
        assertEquals("Listing", PHOTOS.nativeCollectionTitle(top));
        assertEquals("Album", PHOTOS.nativeCollectionTitle(album));
        assertEquals(1, PHOTOS.nativeAlbumContainsAsset(album, ASSETS.get(0)));
        assertEquals(0, PHOTOS.nativeAlbumContainsAsset(album, ASSETS.get(2)));
        assertEquals(0, PHOTOS.nativeAlbumContainsAsset(empty, ASSETS.get(0)));
        log.assertMessages();
    }

    @Test
    void anAlbumIsPagedNewestFirst() throws IOException {
        LogTail log = new LogTail();
        List<Asset> all = albumPage(album, Integer.MAX_VALUE, 0);
        assertEquals(List.of(ASSETS.get(4), ASSETS.get(3), ASSETS.get(1), ASSETS.get(0)),
                all.stream().map(Asset::id).toList());
        assertEquals(all.subList(1, 3), albumPage(album, 2, 1));
        assertEquals(all.subList(0, 2), albumPage(album, 2, -9));
        assertEquals(all.subList(3, 4), albumPage(album, Integer.MAX_VALUE, 3));
        for (int[] none : new int[][] {
            {0, 0}, {-1, 0}, {Integer.MIN_VALUE, Integer.MIN_VALUE}, {5, 4}, {1, Integer.MAX_VALUE}
        }) {
            assertEquals("[]", PHOTOS.nativeListAlbumAssets(album, none[0], none[1]));
        }
        assertEquals("[]", PHOTOS.nativeListAlbumAssets(empty, 10, 0));
        assertEquals("[{\"id\":\"" + ASSETS.get(4) + "\",\"filename\":\"held4.png\","
                        + "\"isVideo\":false,\"width\":8,\"height\":8,\"createdMs\":"
                        + createdOf(4) + ",\"isFavorite\":false,\"isHidden\":false}]",
                PHOTOS.nativeListAlbumAssets(album, 1, 0));
        log.assertMessages();
    }

    @ParameterizedTest
    @ValueSource(strings = {
        "plain", " ", "Untitled", "a \"quoted\" 'title'", "back\\slash/solidus",
        "tab\tline\nreturn\r", "\u0001\b\f\u000B\u001F", "\u007F\u0080\u2028\u2029\uFEFF\uFFFF",
        "%s%n%d %1$s", "Übersicht – 日本語 العربية", "e\u0301 and é", "\\u0041", "{\"id\":\"x\"},",
        "'); DELETE FROM collection; --"
    })
    void titlesComeBackAsTheyAre(String title) {
        String shelf = newFolder(title, top);
        String made = newAlbum(title, shelf);
        assertEquals(title, PHOTOS.nativeCollectionTitle(shelf));
        assertEquals(title, PHOTOS.nativeCollectionTitle(made));
        String record = "{\"id\":\"" + made + "\",\"title\":" + literal(title)
                + ",\"kind\":\"album\",\"count\":0}";
        assertEquals("[" + record + "]", PHOTOS.nativeListAlbums(shelf));
        assertEquals(0, PHOTOS.nativeDeleteAlbum(shelf));
    }

    /** The JSON string literal that the library is to write. */
    private static String literal(String text) {
        StringBuilder json = new StringBuilder("\"");
        for (char unit : text.toCharArray()) {
            switch (unit) {
                case '\t' -> json.append("\\t");
                case '\n' -> json.append("\\n");
                case '\r' -> json.append("\\r");
                case '"' -> json.append("\\\"");
                case '\\' -> json.append("\\\\");
                default -> json.append(
                        unit < ' ' ? String.format("\\u%04x", (int) unit) : String.valueOf(unit));
            }
        }
        return json.append('"').toString();
    }

    /** No method can take a title away, but another program may. */
    @Test
    void withoutATitleItIsUntitledInListings() throws Exception {
        assumeTrue(Catalogue.isThere());
        String shelf = newFolder("shelf", top);
        String nameless = newAlbum("nameless", shelf);
        Catalogue.run("UPDATE collection SET title = NULL WHERE uuid IN ("
                + Catalogue.uuidOf(shelf) + ", " + Catalogue.uuidOf(nameless) + ")");
        assertEquals(List.of("Untitled"), titles(shelf));
        assertEquals("", PHOTOS.nativeCollectionTitle(shelf));
        assertEquals("", PHOTOS.nativeCollectionTitle(nameless));

        String copy = duplicate(shelf);
        assertEquals("Album copy", PHOTOS.nativeCollectionTitle(copy));
        assertEquals("Untitled", PHOTOS.nativeCollectionTitle(level(copy).get(0).id()));
        assertEquals("Album copy", PHOTOS.nativeCollectionTitle(duplicate(nameless)));
        LogTail log = new LogTail();
        assertEquals(0, PHOTOS.nativeRenameAlbum(nameless, "named"));
        log.assertMessages("renamed album to 'named'; Photos now reports 'named'");
        assertEquals(List.of("named", "Album copy"), titles(shelf));
        assertEquals(0, PHOTOS.nativeDeleteAlbum(copy));
        assertEquals(0, PHOTOS.nativeDeleteAlbum(shelf));
    }

    /**
     * No method takes such a title, but another program may have stored one. It is handed out as
     * the JVM can read it, and kept as it is.
     */
    @Test
    void aCharacterThatTheJvmCannotReadIsHandedOutAsAnother() throws Exception {
        assumeTrue(Catalogue.isThere());
        String shelf = newFolder("shelf", top);
        String smiling = newAlbum("smiling", shelf);
        String before = PHOTOS.nativeListAlbums(top);
        Catalogue.run("UPDATE collection SET title = 'smile ' || char(0x1F600) || '!' "
                + "WHERE uuid = " + Catalogue.uuidOf(smiling));
        assertEquals(List.of("smile \uFFFD!"), titles(shelf));
        assertEquals("smile \uFFFD!", PHOTOS.nativeCollectionTitle(smiling));
        assertEquals(before, PHOTOS.nativeListAlbums(top));
        assertEquals(shelf, PHOTOS.nativeParentCollection(smiling));
        String copy = duplicate(smiling);
        assertEquals("smile \uFFFD! copy", PHOTOS.nativeCollectionTitle(copy));
        assertEquals("1", Catalogue.run("SELECT count(*) FROM collection WHERE title = "
                + "'smile ' || char(0x1F600) || '!' AND uuid = " + Catalogue.uuidOf(smiling)));
        assertEquals(0, PHOTOS.nativeRenameAlbum(smiling, "smile"));
        assertEquals(0, PHOTOS.nativeDeleteAlbum(copy));
        assertEquals(List.of("smile"), titles(shelf));
        assertEquals(0, PHOTOS.nativeDeleteAlbum(shelf));
    }
}
