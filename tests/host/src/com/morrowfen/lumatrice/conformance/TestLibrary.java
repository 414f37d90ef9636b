package com.morrowfen.lumatrice.conformance;

import com.google.gson.Gson;
import com.morrowfen.lumatrice.service.PhotosService;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.FileTime;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;

/**
 * The library under test, named by the system property {@code photos.library}, and short ways to
 * use it. All tests share one photo library, so they look only at what they added to it.
 */
final class TestLibrary {
    static final PhotosService PHOTOS = load();
    private static final Gson GSON = new Gson();

    private TestLibrary() {}

    /** An asset record; absent fields of the JSON stay null. */
    record Asset(
            String id,
            String filename,
            Boolean isVideo,
            Long width,
            Long height,
            Long createdMs,
            Boolean isFavorite,
            Boolean isHidden) {}

    /** A collection record. */
    record Collection(String id, String title, String kind, Long count) {
        boolean isFolder() {
            return kind.equals("folder");
        }

        boolean isSmart() {
            return kind.equals("smart");
        }
    }

    private static PhotosService load() {
        PhotosService photos = new PhotosService(Path.of(System.getProperty("photos.library")));
        if (photos.nativeAuthorize() == 0) {
            throw new IllegalStateException("There is no access to the photo library");
        }
        return photos;
    }

    static List<Asset> page(int count, int offset) {
        return List.of(GSON.fromJson(PHOTOS.nativeListAssets(count, offset), Asset[].class));
    }

    static List<Asset> wholeLibrary() {
        return page(Integer.MAX_VALUE, 0);
    }

    static Asset assetWith(String id) {
        return wholeLibrary().stream().filter(asset -> asset.id().equals(id)).findAny()
                .orElseThrow(() -> new AssertionError("not listed: " + id));
    }

    /** What a folder holds, or the top level for null. */
    static List<Collection> level(String parent) {
        return List.of(GSON.fromJson(PHOTOS.nativeListAlbums(parent), Collection[].class));
    }

    static List<String> titles(String parent) {
        return level(parent).stream().map(Collection::title).toList();
    }

    static Collection smartAlbum() {
        return level(null).stream().filter(Collection::isSmart).findFirst()
                .orElseThrow(() -> new AssertionError("no smart album holds anything"));
    }

    static List<Asset> albumPage(String album, int count, int offset) {
        return List.of(
                GSON.fromJson(PHOTOS.nativeListAlbumAssets(album, count, offset), Asset[].class));
    }

    /** The identifiers of all that an album holds, in the order of its listing. */
    static List<String> assetsIn(String album) {
        return albumPage(album, Integer.MAX_VALUE, 0).stream().map(Asset::id).toList();
    }

    /** Makes an album that must come about. */
    static String newAlbum(String title, String parent) {
        return made(PHOTOS.nativeCreateAlbum(title, parent), title);
    }

    /** Makes a folder that must come about. */
    static String newFolder(String title, String parent) {
        return made(PHOTOS.nativeCreateFolder(title, parent), title);
    }

    static String duplicate(String collection) {
        return made(PHOTOS.nativeDuplicateCollection(collection), "copy of " + collection);
    }

    private static String made(String identifier, String what) {
        if (identifier == null) {
            throw new AssertionError("not made: " + what);
        }
        return identifier;
    }

    static String[] importFiles(Path... files) {
        return PHOTOS.nativeImportAssets(
                Arrays.stream(files).map(Path::toString).toArray(String[]::new));
    }

    /** Imports a file that must be accepted. */
    static String importFile(Path file) {
        String[] ids = importFiles(file);
        if (ids == null || ids.length != 1 || ids[0] == null) {
            throw new AssertionError("not imported: " + file);
        }
        return ids[0];
    }

    /** Imports small pictures, each taken a minute after the one before it. */
    static List<String> importPictures(Path folder, String name, int count) throws IOException {
        List<String> ids = new ArrayList<>();
        for (int i = 0; i < count; ++i) {
            Path file = TestFiles.picture(folder.resolve(name + i + ".png"), 8, 8);
            Files.setLastModifiedTime(file, FileTime.fromMillis(createdOf(i)));
            ids.add(importFile(file));
        }
        return ids;
    }

    /** When picture {@code i} of {@link #importPictures} was taken. */
    static long createdOf(int i) {
        return 1_500_000_000_000L + i * 60_000L;
    }

    /** The diagnostic log so far. */
    static String log() throws IOException {
        return new String(logBytes(), StandardCharsets.UTF_8);
    }

    static byte[] logBytes() throws IOException {
        Path log = Path.of(System.getenv("HOME"), ".lumatrice", "logs", "photos-native.log");
        return Files.exists(log) ? Files.readAllBytes(log) : new byte[0];
    }
}
