package com.morrowfen.lumatrice.photos;

import static org.junit.jupiter.api.Assertions.*;

import com.morrowfen.lumatrice.service.PhotosService;
import java.awt.image.BufferedImage;
import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayDeque;
import java.util.Arrays;
import java.util.List;
import java.util.Map;
import java.util.Optional;
import java.util.Queue;
import java.util.concurrent.CancellationException;
import java.util.concurrent.CompletionException;
import java.util.concurrent.Executor;
import javax.imageio.ImageIO;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** The layer with types, on a real library of this process's own home. */
class PhotoLibraryTest {
    private static final String EMOJI = "\ud83d\ude00";
    private static final PhotoLibrary LIBRARY = PhotoLibrary.open();

    @TempDir Path folder;

    @BeforeEach
    void emptyLibrary() {
        assertEquals(Access.FULL, LIBRARY.authorize());
        List<String> all = LIBRARY.assets().map(Asset::id).toList();
        assertEquals(all.size(), LIBRARY.deleteAssets(all));
    }

    private Path picture(String name, int width, int height) throws IOException {
        Path file = folder.resolve(name);
        ImageIO.write(new BufferedImage(width, height, BufferedImage.TYPE_INT_RGB), "jpg", file.toFile());
        return file;
    }

    private static void assertFails(int code, Runnable call) {
        PhotosException problem = assertThrows(PhotosException.class, call::run);
        assertEquals(code, problem.code().orElse(0));
        assertFalse(problem.getMessage().contains("not one that"), problem.getMessage());
    }

    private void assertFolderHolds(String... names) throws IOException {
        try (var files = Files.list(folder)) {
            assertEquals(List.of(names), files.map(file -> file.getFileName().toString()).sorted().toList());
        }
    }

    @Test
    void importsAreToldFileByFileAndListedInPages() throws IOException {
        List<Path> files = List.of(picture("a.jpg", 30, 20), folder.resolve("missing.jpg"),
                folder.resolve(EMOJI + ".jpg"), picture("b.jpg", 20, 30), picture("c.jpg", 10, 10));
        List<ImportResult> results = LIBRARY.importFiles(files);
        assertEquals(files, results.stream().map(ImportResult::file).toList());
        assertEquals(List.of(true, false, false, true, true), results.stream().map(ImportResult::isImported).toList());
        assertTrue(results.get(2).problem().orElseThrow().contains("U+1F600"));
        String b = results.get(3).assetId().orElseThrow();
        assertEquals(3, LIBRARY.assetCount());
        List<Asset> all = LIBRARY.assets().toList();
        assertEquals(all, LIBRARY.pages(2).flatMap(page -> page.assets().stream()).toList());
        assertEquals(all.subList(1, 2), LIBRARY.page(1, 1).assets());
        Asset listed = all.stream().filter(asset -> asset.id().equals(b)).findAny().orElseThrow();
        assertEquals(new Asset(b, "b.jpg", false, 20, 30, listed.createdMs(), false, false), listed);
        assertEquals(List.of(), LIBRARY.importFiles(List.of()));
        assertFalse(LIBRARY.importFile(files.get(2)).isImported());
    }

    @Test
    void collectionsMarksAndThumbnails() throws IOException {
        String one = LIBRARY.importFile(picture("a.jpg", 60, 40)).assetId().orElseThrow();
        String two = LIBRARY.importFile(picture("b.jpg", 8, 9)).assetId().orElseThrow();
        String outer = LIBRARY.createFolder("outer");
        String inner = LIBRARY.createFolder("inner", outer);
        String album = LIBRARY.createAlbum("album", outer);
        assertEquals(2, LIBRARY.addToAlbum(album, List.of(one, two, "unknown")));
        assertEquals(Map.of(inner, Collection.Kind.FOLDER, album, Collection.Kind.ALBUM), LIBRARY.collections(outer)
                .stream().collect(java.util.stream.Collectors.toMap(Collection::id, Collection::kind)));
        assertEquals(Optional.of(outer), LIBRARY.parentOf(album));
        assertEquals(Optional.empty(), LIBRARY.parentOf(outer));
        assertTrue(LIBRARY.albumContains(album, one));
        assertEquals(1, LIBRARY.removeFromAlbum(album, List.of(one)));
        assertFalse(LIBRARY.albumContains(album, one));
        assertEquals(1, LIBRARY.setFavorite(List.of(two), true));
        assertEquals(1, LIBRARY.copyAttributes(two, one));
        assertEquals(1, LIBRARY.setHidden(List.of(two), true));
        assertEquals(List.of(one), LIBRARY.albumAssets(album).filter(Asset::isFavorite).map(Asset::id).toList());
        assertEquals(1, LIBRARY.setHidden(List.of(two), false));
        assertEquals(LIBRARY.albumAssets(album).toList(), LIBRARY.albumPage(album, 0, 5).assets());
        assertEquals(2, LIBRARY.albumPages(album, 1).count());
        LIBRARY.rename(outer, "renamed");
        assertEquals(Optional.of("renamed"), LIBRARY.titleOf(outer));
        String copy = LIBRARY.duplicate(outer);
        LIBRARY.deleteCollection(copy);
        assertEquals(Optional.empty(), LIBRARY.titleOf(copy));
        String top = LIBRARY.createAlbum("top");
        assertTrue(LIBRARY.collections().contains(new Collection(top, "top", Collection.Kind.ALBUM, 0)));

        Thumbnail picture = LIBRARY.thumbnail(one, 30, 20).orElseThrow();
        BufferedImage decoded = ImageIO.read(picture.newInputStream());
        assertEquals(decoded.getWidth() + "x" + decoded.getHeight(), picture.width() + "x" + picture.height());
        ByteArrayOutputStream written = new ByteArrayOutputStream();
        picture.writeTo(written);
        assertArrayEquals(written.toByteArray(), picture.toByteArray());
        assertEquals(Optional.empty(), LIBRARY.thumbnail("unknown", 30, 20));
        for (int end = 0; end < 700 && end < picture.length(); ++end) {
            new Thumbnail(Arrays.copyOf(picture.toByteArray(), end));
        }
    }

    @Test
    void failuresHaveTheirCodesAndAMeaning() throws IOException {
        String id = LIBRARY.importFile(picture("a.jpg", 60, 40)).assetId().orElseThrow();
        String smart = LIBRARY.collections().stream().filter(each -> each.kind() == Collection.Kind.SMART)
                .findAny().orElseThrow().id();
        assertFails(-1, () -> LIBRARY.deleteAssets(List.of("unknown")));
        assertFails(-1, () -> LIBRARY.setFavorite(List.of("unknown"), true));
        assertFails(-1, () -> LIBRARY.setHidden(List.of("unknown"), true));
        assertFails(-1, () -> LIBRARY.copyAttributes(id, "unknown"));
        assertFails(-1, () -> LIBRARY.albumContains("unknown", id));
        assertFails(-1, () -> LIBRARY.addToAlbum("unknown", List.of(id)));
        assertFails(-2, () -> LIBRARY.addToAlbum(smart, List.of(id)));
        assertFails(-2, () -> LIBRARY.removeFromAlbum(smart, List.of(id)));
        assertFails(-1, () -> LIBRARY.rename("unknown", "x"));
        assertFails(-2, () -> LIBRARY.rename(smart, "x"));
        assertFails(-2, () -> LIBRARY.deleteCollection(smart));
        assertFails(0, () -> LIBRARY.createAlbum("x", "unknown"));
        assertFails(0, () -> LIBRARY.createFolder("x", "unknown"));
        assertFails(0, () -> LIBRARY.duplicate(smart));
        assertFails(-1, () -> LIBRARY.copyForEditing("unknown", folder.resolve("x")));
        assertFails(-3, () -> LIBRARY.copyForEditing(id, folder.resolve("no/x")));
        assertFails(-3, () -> LIBRARY.applyEdit(id, folder.resolve("missing")));
        assertThrows(IllegalArgumentException.class, () -> LIBRARY.copyForEditing(id, folder));
        assertThrows(IllegalArgumentException.class, () -> LIBRARY.page(-1, 1));
        assertThrows(IllegalArgumentException.class, () -> LIBRARY.thumbnail(id, 0, 1));
    }

    @Test
    void exportsAndEditsLeaveAllOrNothing() throws Exception {
        Path source = picture("a.jpg", 60, 40);
        String id = LIBRARY.importFile(source).assetId().orElseThrow();
        Path out = Files.writeString(folder.resolve("out " + EMOJI), "before");
        CompletionException failed = assertThrows(CompletionException.class,
                () -> LIBRARY.export("unknown", out).future().join());
        assertEquals(-1, ((PhotosException) failed.getCause()).code().orElseThrow());
        assertEquals("before", Files.readString(out));
        assertThrows(IllegalArgumentException.class, () -> LIBRARY.export(id, folder));

        Queue<Runnable> later = new ArrayDeque<>();
        PhotoLibrary patient = LIBRARY.withExportsOn(later::add);
        Export never = patient.export(id, out);
        never.cancel();
        Export cancelledThroughItsFuture = patient.export(id, out);
        cancelledThroughItsFuture.future().cancel(false);
        Export late = patient.export(id, folder.resolve("taken"));
        Files.createDirectory(folder.resolve("taken"));
        later.forEach(Runnable::run);
        assertThrows(CompletionException.class, late.future()::join);
        cancelledThroughItsFuture.awaitEnd();
        assertThrows(CancellationException.class, never.future()::join);
        assertEquals("before", Files.readString(out));

        assertEquals(out, LIBRARY.export(id, out).future().join());
        assertEquals(-1, Files.mismatch(source, out));
        LIBRARY.edit(id, (original, rendered) -> {
            assertEquals(-1, Files.mismatch(source, original));
            Files.copy(picture("b.jpg", 30, 50), rendered);
        });
        assertThrows(IOException.class, () -> LIBRARY.edit(id, (original, rendered) -> {
            throw new IOException("no idea");
        }));
        LIBRARY.export(id, out).future().join();
        assertEquals(-1, Files.mismatch(folder.resolve("b.jpg"), out));
        assertFolderHolds("a.jpg", "b.jpg", out.getFileName().toString(), "taken");
    }

    /** How far a transfer is when the cancellation comes is chance; what is left must not be. */
    @Test
    void aCancelledTransferLeavesWhatStoodThere() throws Exception {
        Path source = picture("a.jpg", 60, 40);
        Files.write(source, new byte[64 << 20], java.nio.file.StandardOpenOption.APPEND);
        String id = LIBRARY.importFile(source).assetId().orElseThrow();
        Path out = folder.resolve("out");
        boolean stopped = false;
        for (int tries = 0; tries < 50 && !stopped; ++tries) {
            Files.writeString(out, "before");
            Export export = LIBRARY.export(id, out);
            export.cancel();
            export.awaitEnd();
            stopped = export.future().handle((done, problem) -> problem instanceof CancellationException).join();
            assertEquals(stopped ? 6 : Files.size(source), Files.size(out));
        }
        assertTrue(stopped, "cancelled once");
        assertFolderHolds("a.jpg", "out");
    }

    @Test
    void nullAndTextThatCannotCrossNeverReachTheLibrary() throws Exception {
        Path file = folder.resolve("x");
        Map<Class<?>, Object> good = Map.of(String.class, "x", int.class, 1, boolean.class, true, Path.class, file,
                List.class, List.of("x"), Executor.class, (Executor) Runnable::run, PhotosService.class,
                LIBRARY.service(), Editor.class, (Editor) (original, rendered) -> { });
        for (Method method : PhotoLibrary.class.getDeclaredMethods()) {
            Class<?>[] types = method.getParameterTypes();
            for (int i = 0; Modifier.isPublic(method.getModifiers()) && i < types.length; ++i) {
                Object[] arguments = Arrays.stream(types).map(good::get).toArray();
                if (!types[i].isPrimitive()) {
                    assertRefused(NullPointerException.class, method, arguments, i, null);
                }
                if (types[i] == List.class) {
                    assertRefused(NullPointerException.class, method, arguments, i, Arrays.asList((Object) null));
                }
                if (types[i] == String.class) {
                    assertRefused(IllegalArgumentException.class, method, arguments, i, "a" + EMOJI);
                    assertRefused(IllegalArgumentException.class, method, arguments, i, "\ud83d");
                    assertRefused(IllegalArgumentException.class, method, arguments, i, "a\0");
                }
            }
        }
    }

    private static void assertRefused(Class<?> how, Method method, Object[] arguments, int index, Object value) {
        Object[] all = arguments.clone();
        all[index] = value;
        Throwable thrown = assertThrows(InvocationTargetException.class, () -> method.invoke(LIBRARY, all),
                () -> method + " took " + value).getCause();
        assertEquals(how, thrown.getClass(), () -> method + " of " + value);
    }
}
