package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.PHOTOS;
import static com.morrowfen.lumatrice.conformance.TestLibrary.assetWith;
import static com.morrowfen.lumatrice.conformance.TestLibrary.importFile;
import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertTrue;
import static org.junit.jupiter.api.Assumptions.assumeTrue;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** The command line tool at work on the library that this process, its host, has open. */
class OwnersToolTest {
    private static final Path TOOL =
            Path.of(System.getProperty("photos.library")).resolveSibling("photos-kit");

    @TempDir Path folder;

    @BeforeEach
    void needsTheTool() {
        assumeTrue(Files.isExecutable(TOOL), "no tool beside this library");
    }

    private static int tool(String... words) throws IOException, InterruptedException {
        List<String> command = new ArrayList<>(List.of(TOOL.toString()));
        command.addAll(List.of(words));
        Process process = new ProcessBuilder(command).redirectErrorStream(true).start();
        process.getOutputStream().close();
        String output =
                new String(process.getInputStream().readAllBytes(), StandardCharsets.UTF_8);
        int status = process.waitFor();
        if (status != 0) {
            System.out.println(String.join(" ", command) + ": " + output);
        }
        return status;
    }

    private byte[] exported(String asset) throws IOException {
        Path destination = folder.resolve("exported");
        assertEquals(0, PHOTOS.nativeExportToFile(asset, destination.toString(), 1));
        return Files.readAllBytes(destination);
    }

    @Test
    void whatAHostDeletesComesBackWithItsEditAndMarks() throws Exception {
        String asset = importFile(TestFiles.picture(folder.resolve("a.jpg"), 60, 40));
        Path rendered = TestFiles.picture(folder.resolve("rendered.jpg"), 30, 50);
        assertEquals(0, PHOTOS.nativeApplyEdit(asset, rendered.toString()));
        assertEquals(1, PHOTOS.nativeSetFavorite(new String[] {asset}, true));
        int count = PHOTOS.nativeAssetCount();
        assertEquals(1, PHOTOS.nativeDeleteAssets(new String[] {asset}));
        assertEquals(count - 1, PHOTOS.nativeAssetCount());

        assertEquals(0, tool("trash", "restore", asset));
        assertEquals(count, PHOTOS.nativeAssetCount());
        assertTrue(assetWith(asset).isFavorite());
        assertArrayEquals(Files.readAllBytes(rendered), exported(asset));
        assertEquals(1, tool("trash", "restore", asset), "it is restored already");
    }

    @Test
    void aRevertedAssetIsAsItWasImported() throws Exception {
        Path picture = TestFiles.picture(folder.resolve("a.jpg"), 60, 40);
        String asset = importFile(picture);
        Path rendered = TestFiles.picture(folder.resolve("rendered.jpg"), 30, 50);
        assertEquals(0, PHOTOS.nativeApplyEdit(asset, rendered.toString()));
        Path toolsExport = folder.resolve("by the tool");
        assertEquals(0, tool("export", toolsExport.toString(), asset));
        assertArrayEquals(
                Files.readAllBytes(rendered), Files.readAllBytes(toolsExport.resolve("a.jpg")));
        assertEquals(0, tool("export", toolsExport.toString(), asset, "--original"));
        assertArrayEquals(
                Files.readAllBytes(picture), Files.readAllBytes(toolsExport.resolve("a (2).jpg")));

        assertEquals(0, tool("revert", asset));
        assertEquals(60, assetWith(asset).width());
        assertArrayEquals(Files.readAllBytes(picture), exported(asset));
        assertEquals(1, tool("revert", asset), "nothing is left to revert");
    }

    @Test
    void aDecisionAboutAccessHoldsAtOnceInARunningHost() throws Exception {
        String chosen = importFile(TestFiles.picture(folder.resolve("a.jpg"), 60, 40));
        String other = importFile(TestFiles.picture(folder.resolve("b.jpg"), 60, 40));
        try {
            assertEquals(0, tool("access", "limited", chosen));
            assertEquals(2, PHOTOS.nativeAuthorize());
            assertNotNull(assetWith(chosen));
            assertNull(PHOTOS.nativeRequestThumbnail(other, 20, 20));
            assertEquals(1, PHOTOS.nativeAssetCount());
            assertEquals(0, tool("access", "denied"));
            assertEquals(0, PHOTOS.nativeAuthorize());
            assertEquals(0, PHOTOS.nativeAssetCount());
        } finally {
            assertEquals(0, tool("access", "full"));
        }
        assertEquals(1, PHOTOS.nativeAuthorize());
        assertNotNull(PHOTOS.nativeRequestThumbnail(other, 20, 20));
    }
}
