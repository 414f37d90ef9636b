package com.morrowfen.lumatrice.conformance;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertTrue;
import static org.junit.jupiter.api.Assumptions.assumeTrue;

import com.google.gson.Gson;
import com.morrowfen.lumatrice.service.PhotosService;
import java.awt.image.BufferedImage;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import javax.imageio.ImageIO;

/** The library under test, named by the system property {@code photos.library}. */
final class TestLibrary {
    static final PhotosService PHOTOS =
            new PhotosService(Path.of(System.getProperty("photos.library")));
    private static final Path TOOL =
            Path.of(System.getProperty("photos.library")).resolveSibling("photos-kit");

    record Asset(String id, String filename, Boolean isVideo, Long width, Long height,
            Long createdMs, Boolean isFavorite, Boolean isHidden) {}

    record Collection(String id, String title, String kind, Long count) {}

    private TestLibrary() {}

    static List<Asset> assets(String json) {
        return List.of(new Gson().fromJson(json, Asset[].class));
    }

    /** The albums and folders in a folder, or at the top level for null. */
    static List<Collection> level(String parent) {
        Collection[] all =
                new Gson().fromJson(PHOTOS.nativeListAlbums(parent), Collection[].class);
        return Arrays.stream(all).filter(one -> !one.kind().equals("smart")).toList();
    }

    static String made(String identifier) {
        assertNotNull(identifier, "not made");
        return identifier;
    }

    static Path picture(Path file, int width, int height) throws IOException {
        String format = file.toString().endsWith(".png") ? "png" : "jpg";
        ImageIO.write(new BufferedImage(width, height, BufferedImage.TYPE_INT_RGB), format,
                file.toFile());
        return file;
    }

    static String importFile(Path file) {
        return made(PHOTOS.nativeImportAssets(new String[] {file.toString()})[0]);
    }

    /** Lets the owner's tool do something, if it is there, and expects how it ends. */
    static void tool(int status, String... words) throws IOException, InterruptedException {
        assumeTrue(Files.isExecutable(TOOL), "no tool beside this library");
        List<String> command = new ArrayList<>(List.of(TOOL.toString()));
        command.addAll(List.of(words));
        Process process = new ProcessBuilder(command).redirectErrorStream(true).start();
        process.getOutputStream().close();
        String output = new String(process.getInputStream().readAllBytes());
        assertEquals(status, process.waitFor(), () -> command + ": " + output);
    }

    static void assertJpeg(byte[] bytes) {
        assertTrue(bytes != null && bytes.length > 4 && bytes[0] == -1 && bytes[1] == -40
                && bytes[bytes.length - 2] == -1 && bytes[bytes.length - 1] == -39);
    }
}
