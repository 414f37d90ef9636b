package com.morrowfen.lumatrice.conformance;

import com.google.gson.Gson;
import com.morrowfen.lumatrice.service.PhotosService;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
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
            Boolean isFavorite) {}

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

    /** The diagnostic log so far. */
    static String log() throws IOException {
        Path log = Path.of(System.getenv("HOME"), ".lumatrice", "logs", "photos-native.log");
        return Files.exists(log) ? Files.readString(log, StandardCharsets.UTF_8) : "";
    }
}
