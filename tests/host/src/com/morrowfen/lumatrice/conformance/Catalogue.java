package com.morrowfen.lumatrice.conformance;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.concurrent.TimeUnit;

/**
 * The embedded library's catalogue, reached through the {@code sqlite3} program: never within this
 * process, where closing the file would drop the library's own locks on it.
 */
final class Catalogue {
    private static final Path FILE =
            Path.of(System.getenv("HOME"), "Pictures", "Lumatrice Library", "library.db");

    private Catalogue() {}

    /** Whether the library under test is the embedded one. */
    static boolean isThere() {
        return Files.exists(FILE);
    }

    /** What the program prints for a statement, without the last line's end. */
    static String run(String sql) throws IOException, InterruptedException {
        Process program = new ProcessBuilder("sqlite3", "-batch", "-bail", "-cmd",
                ".timeout 20000", FILE.toString(), sql).redirectErrorStream(true).start();
        String output =
                new String(program.getInputStream().readAllBytes(), StandardCharsets.UTF_8);
        assertTrue(program.waitFor(30, TimeUnit.SECONDS));
        assertEquals(0, program.exitValue(), output);
        return output.stripTrailing();
    }

    /** The collection's UUID as a literal for statements. */
    static String uuidOf(String collection) {
        return "x'" + collection.substring(0, collection.indexOf('/')).replace("-", "") + "'";
    }

    /** Expects a catalogue in which SQLite finds no fault, and so many albums and folders. */
    static void assertSound(int collections) throws IOException, InterruptedException {
        assertEquals("ok", run("PRAGMA integrity_check"));
        assertEquals("", run("PRAGMA foreign_key_check"));
        assertEquals(Integer.toString(collections), run("SELECT count(*) FROM collection"));
    }
}
