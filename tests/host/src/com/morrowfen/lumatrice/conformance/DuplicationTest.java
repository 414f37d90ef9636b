package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.PHOTOS;
import static com.morrowfen.lumatrice.conformance.TestLibrary.assetsIn;
import static com.morrowfen.lumatrice.conformance.TestLibrary.duplicate;
import static com.morrowfen.lumatrice.conformance.TestLibrary.importPictures;
import static com.morrowfen.lumatrice.conformance.TestLibrary.level;
import static com.morrowfen.lumatrice.conformance.TestLibrary.newAlbum;
import static com.morrowfen.lumatrice.conformance.TestLibrary.newFolder;
import static com.morrowfen.lumatrice.conformance.TestLibrary.titles;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;

import com.morrowfen.lumatrice.conformance.TestLibrary.Collection;
import java.io.IOException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import org.junit.jupiter.api.AfterAll;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.Timeout;
import org.junit.jupiter.api.io.TempDir;

/** Copies of albums and of trees of folders, and trees that are wide or deep. */
@Timeout(120)
class DuplicationTest {
    private static final List<String> ASSETS = new ArrayList<>();
    private static String top;

    @BeforeAll
    static void importAssets(@TempDir Path files) throws IOException {
        ASSETS.addAll(importPictures(files, "copied", 4));
        top = newFolder("Duplication", null);
    }

    @AfterAll
    static void removeTree() {
        assertEquals(0, PHOTOS.nativeDeleteAlbum(top));
    }

    private static Collection childOf(String folder, String id) {
        return level(folder).stream().filter(one -> one.id().equals(id)).findAny().orElseThrow();
    }

    private static String titleOfCopy(String source) {
        return PHOTOS.nativeCollectionTitle(duplicate(source));
    }

    @Test
    void titlesAreChosenAmongTheSiblings() {
        String shelf = newFolder("shelf", top);
        String trip = newAlbum("Trip", shelf);
        newAlbum("trip copy", shelf);
        newAlbum("Trip copy ", shelf);
        newAlbum("Trip copy", newFolder("elsewhere", shelf));
        assertEquals("Trip copy", titleOfCopy(trip));
        newFolder("Trip copy 2", shelf);
        assertEquals("Trip copy 3", titleOfCopy(trip));
        newAlbum("Trip copy 5", shelf);
        assertEquals("Trip copy 4", titleOfCopy(trip));
        assertEquals("Trip copy 6", titleOfCopy(trip));
        String copy = level(shelf).stream().filter(one -> one.title().equals("Trip copy"))
                .findAny().orElseThrow().id();
        assertEquals("Trip copy copy", titleOfCopy(copy));
        // The same to the eye, but not the same text.
        newAlbum("e\u0301 copy", shelf);
        assertEquals("\u00E9 copy", titleOfCopy(newAlbum("\u00E9", shelf)));
        assertEquals("%s\n%d copy", titleOfCopy(newFolder("%s\n%d", shelf)));
        assertEquals(0, PHOTOS.nativeDeleteAlbum(shelf));
    }

    @Test
    void atTheTopLevelItStaysThere() throws IOException {
        String source = newFolder("Copied at the top", null);
        newAlbum("inside", source);
        LogTail log = new LogTail();
        String copy = duplicate(source);
        log.assertMessages();
        assertEquals("", PHOTOS.nativeParentCollection(copy));
        assertEquals("Copied at the top copy", childOf(null, copy).title());
        assertEquals(List.of("inside"), titles(copy));
        assertEquals("Copied at the top copy 2", titleOfCopy(source));
        for (Collection one : level(null)) {
            if (one.title().startsWith("Copied at the top")) {
                assertEquals(0, PHOTOS.nativeDeleteAlbum(one.id()));
            }
        }
    }

    @Test
    void anAlbumsCopyHoldsTheSameAssetsAndIsItsOwn() throws IOException {
        String source = newAlbum("Album", top);
        assertEquals(3, PHOTOS.nativeAddAssetsToAlbum(source,
                new String[] {ASSETS.get(2), ASSETS.get(0), ASSETS.get(3)}));
        int assets = PHOTOS.nativeAssetCount();
        LogTail log = new LogTail();
        String copy = duplicate(source);
        String emptyCopy = duplicate(newAlbum("Empty", top));
        assertEquals(assets, PHOTOS.nativeAssetCount());
        assertEquals(assetsIn(source), assetsIn(copy));
        assertEquals(3, childOf(top, copy).count());
        assertEquals(0, childOf(top, emptyCopy).count());
        assertEquals(1, PHOTOS.nativeRemoveAssetsFromAlbum(copy, new String[] {ASSETS.get(0)}));
        assertEquals(3, assetsIn(source).size());
        assertEquals(0, PHOTOS.nativeDeleteAlbum(source));
        assertEquals(List.of(ASSETS.get(3), ASSETS.get(2)), assetsIn(copy));
        log.assertMessages("created album Empty (" + idOf("Empty") + ") parent=" + top);
    }

    private static String idOf(String title) {
        return level(top).stream().filter(one -> one.title().equals(title)).findAny()
                .orElseThrow().id();
    }

    @Test
    void aFoldersCopyIsTheSameTree() throws IOException {
        String source = newFolder("Tree", top);
        String beach = newAlbum("Beach", source);
        newFolder("empty", source);
        String sub = newFolder("Beach", source);
        newAlbum("Beach copy", source);
        newAlbum("Beach", sub);
        String last = newAlbum("\"\\\n\u0001日本", newFolder("Beach", sub));
        assertEquals(2, PHOTOS.nativeAddAssetsToAlbum(
                beach, new String[] {ASSETS.get(1), ASSETS.get(0)}));
        assertEquals(1, PHOTOS.nativeAddAssetsToAlbum(last, new String[] {ASSETS.get(2)}));
        List<CollectionTree.Shape> before = CollectionTree.of(childOf(top, source)).shapes();
        LogTail log = new LogTail();
        String copy = duplicate(source);
        log.assertMessages();
        CollectionTree copied = CollectionTree.of(childOf(top, copy));
        assertEquals("Tree copy", copied.shapes().get(0).title());
        assertEquals(before.subList(1, before.size()), copied.shapesInside());
        assertEquals(before, CollectionTree.of(childOf(top, source)).shapes());
        assertEquals(0, PHOTOS.nativeDeleteAlbum(source));
        assertEquals(copied.shapes(), CollectionTree.of(childOf(top, copy)).shapes());
    }

    @Test
    void whatCannotBeCopiedIsNullInSilence() throws IOException {
        String before = PHOTOS.nativeListAlbums(null);
        LogTail log = new LogTail();
        List<String> none = new ArrayList<>(Arrays.asList(null, "", ASSETS.get(0)));
        none.addAll(List.of(CollectionListingTest.UNREADABLE));
        none.addAll(List.of(CollectionListingTest.UNKNOWN));
        level(null).stream().filter(Collection::isSmart).forEach(one -> none.add(one.id()));
        for (String id : none) {
            assertNull(PHOTOS.nativeDuplicateCollection(id));
        }
        log.assertMessages();
        assertEquals(before, PHOTOS.nativeListAlbums(null));
    }

    @Test
    void amongAThousandSiblingsTheCounterStopsAt999() {
        String shelf = newFolder("thousand", top);
        String source = newAlbum("Trip", shelf);
        String base = newAlbum("Trip copy", shelf);
        List<String> expected = new ArrayList<>(List.of("Trip", "Trip copy"));
        for (int i = 2; i <= 999; ++i) {
            newAlbum("Trip copy " + i, shelf);
            expected.add("Trip copy " + i);
        }
        assertEquals(expected, titles(shelf));
        String copy = duplicate(source);
        assertEquals("Trip copy", PHOTOS.nativeCollectionTitle(copy));
        expected.add("Trip copy");
        assertEquals(expected, titles(shelf));
        assertEquals(1_001, childOf(top, shelf).count());

        assertEquals(0, PHOTOS.nativeDeleteAlbum(copy));
        assertEquals(0, PHOTOS.nativeDeleteAlbum(level(shelf).get(999).id()));
        assertEquals("Trip copy 999", titleOfCopy(source));
        assertEquals(0, PHOTOS.nativeDeleteAlbum(base));
        assertEquals("Trip copy", titleOfCopy(source));
        assertEquals(0, PHOTOS.nativeDeleteAlbum(shelf));
        assertEquals("[]", PHOTOS.nativeListAlbums(shelf));
    }

    @Test
    void twoHundredFoldersInEachOtherAreCopiedAndDeleted() {
        int depth = 200;
        String outermost = newFolder("depth 0", top);
        String folder = outermost;
        for (int i = 1; i < depth; ++i) {
            folder = newFolder("depth " + i, folder);
        }
        String album = newAlbum("at the bottom", folder);
        assertEquals(2, PHOTOS.nativeAddAssetsToAlbum(
                album, new String[] {ASSETS.get(0), ASSETS.get(3)}));
        CollectionTree source = CollectionTree.of(childOf(top, outermost));
        assertEquals(depth + 1, source.size());
        assertEquals(depth, source.shapes().get(depth).depth());

        String copy = duplicate(outermost);
        CollectionTree copied = CollectionTree.of(childOf(top, copy));
        assertEquals(source.shapesInside(), copied.shapesInside());
        String copiedAlbum = copied.collections().get(depth).id();
        assertEquals(0, PHOTOS.nativeDeleteAlbum(outermost));
        assertNull(PHOTOS.nativeCollectionTitle(album));
        assertEquals(2, assetsIn(copiedAlbum).size());
        assertEquals(0, PHOTOS.nativeDeleteAlbum(copy));
        for (Collection one : copied.collections()) {
            assertNull(PHOTOS.nativeCollectionTitle(one.id()));
        }
    }
}
