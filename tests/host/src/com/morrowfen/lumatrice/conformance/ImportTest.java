package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.PHOTOS;
import static com.morrowfen.lumatrice.conformance.TestLibrary.assetWith;
import static com.morrowfen.lumatrice.conformance.TestLibrary.importFile;
import static com.morrowfen.lumatrice.conformance.TestLibrary.importFiles;
import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotEquals;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.morrowfen.lumatrice.conformance.TestLibrary.Asset;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.condition.DisabledOnOs;
import org.junit.jupiter.api.condition.OS;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class ImportTest {
    @TempDir Path folder;

    @Test
    void keepsThePlaceOfAnUnreadableFileAndLeavesTheSources() throws Exception {
        Path film = TestFiles.video(folder.resolve("film.mp4"), 320, 240);
        Path missing = folder.resolve("missing.jpg");
        Path picture = TestFiles.picture(folder.resolve("picture.png"), 60, 40);
        byte[] filmBytes = Files.readAllBytes(film);
        byte[] pictureBytes = Files.readAllBytes(picture);

        String[] ids = importFiles(film, missing, picture);

        assertEquals(3, ids.length);
        assertNull(ids[1]);
        assertNotEquals(ids[0], ids[2]);
        Asset video = assetWith(ids[0]);
        assertTrue(video.isVideo());
        assertEquals("film.mp4", video.filename());
        assertEquals(320, video.width());
        Asset photo = assetWith(ids[2]);
        assertFalse(photo.isVideo());
        assertFalse(photo.isFavorite());
        assertEquals("picture.png", photo.filename());
        assertEquals(60, photo.width());
        assertEquals(40, photo.height());
        assertArrayEquals(filmBytes, Files.readAllBytes(film));
        assertArrayEquals(pictureBytes, Files.readAllBytes(picture));
        String log = TestLibrary.log();
        assertTrue(log.contains(" import skipped (unreadable): " + missing + "\n"), log);
        assertTrue(log.contains(" imported film.mp4 as " + ids[0] + ": resource type=2 "
                + "originalFilename='film.mp4' uti=public.mpeg-4\n"), log);
        assertTrue(log.contains(" imported picture.png as " + ids[2] + ": resource type=1 "
                + "originalFilename='picture.png' uti=public.png\n"), log);
    }

    @Test
    void givesElementsThatAreNoTextNoPlace() throws IOException {
        Path first = TestFiles.picture(folder.resolve("first.png"), 8, 8);
        Path second = TestFiles.picture(folder.resolve("second.png"), 8, 8);
        String emoji = folder.resolve("smile\uD83D\uDE00.png").toString();
        String[] ids = PHOTOS.nativeImportAssets(new String[] {
            null, first.toString(), emoji, "nul\0.png", null, second.toString()
        });
        assertEquals(2, ids.length);
        assertEquals("first.png", assetWith(ids[0]).filename());
        assertEquals("second.png", assetWith(ids[1]).filename());
    }

    @Test
    void isNullWithoutAPath() {
        assertNull(PHOTOS.nativeImportAssets(null));
        assertNull(PHOTOS.nativeImportAssets(new String[0]));
        assertNull(PHOTOS.nativeImportAssets(new String[] {null, null}));
        assertNull(PHOTOS.nativeImportAssets(new String[] {"\uD83D\uDE00"}));
        assertArrayEquals(
                new String[] {null}, PHOTOS.nativeImportAssets(new String[] {""}));
    }

    @Test
    void takesArraysLongerThanTheLocalReferenceTable() {
        String[] paths = new String[5_000];
        Arrays.fill(paths, folder.resolve("nothing here").toString());
        String[] ids = PHOTOS.nativeImportAssets(paths);
        assertArrayEquals(new String[paths.length], ids);
    }

    @Test
    void refusesWhatIsNeitherPictureNorVideoAndSaysWhy() throws IOException {
        int before = PHOTOS.nativeAssetCount();
        Path notes = TestFiles.text(folder.resolve("notes.txt"), "not a picture");
        Path broken = TestFiles.text(folder.resolve("broken.jpg"), "not a picture either");
        Path film = TestFiles.text(folder.resolve("broken.mp4"), "nor a film");
        Path directory = Files.createDirectory(folder.resolve("directory.jpg"));
        assertArrayEquals(new String[4], importFiles(notes, broken, film, directory));
        assertEquals(before, PHOTOS.nativeAssetCount());
        String log = TestLibrary.log();
        assertTrue(log.contains(" import failed for notes.txt: "), log);
        assertTrue(log.contains(" import failed for broken.jpg: "), log);
        assertTrue(log.contains(" import failed for broken.mp4: "), log);
    }

    @Test
    void sameFileTwiceMakesTwoAssets() throws IOException {
        Path picture = TestFiles.picture(folder.resolve("twice.png"), 8, 8);
        String[] ids = importFiles(picture, picture);
        assertNotNull(ids[0]);
        assertNotNull(ids[1]);
        assertNotEquals(ids[0], ids[1]);
    }

    @ParameterizedTest
    @ValueSource(strings = {
        "it's \"quoted\".png", "100 %s %n %d.png", "semicolon;--.png", " leading space.png",
        "Übersicht – 日本 \u2028 \u007F.png", "no extension", "UPPER.PNG"
    })
    void keepsTheName(String name) throws IOException {
        // ImageIO writes a JPEG for all names that do not end in png: the bytes tell.
        Path picture = TestFiles.picture(folder.resolve(name), 8, 8);
        assertEquals(name, assetWith(importFile(picture)).filename());
    }

    @ParameterizedTest
    @ValueSource(strings = {"line\nbreak\rtab\t.png", "back\\slash.png", "\u0001\b\f\u001F.png"})
    @DisabledOnOs(value = OS.WINDOWS, disabledReason = "its file names have no such characters")
    void keepsControlCharactersInTheName(String name) throws IOException {
        Path picture = TestFiles.picture(folder.resolve(name), 8, 8);
        assertEquals(name, assetWith(importFile(picture)).filename());
    }

    @Test
    void keepsTheLongestName() throws IOException {
        String name = "ü".repeat(125) + "x.png";
        assertEquals(255, name.getBytes(StandardCharsets.UTF_8).length);
        Path picture = TestFiles.picture(folder.resolve(name), 8, 8);
        assertEquals(name, assetWith(importFile(picture)).filename());
    }
}
