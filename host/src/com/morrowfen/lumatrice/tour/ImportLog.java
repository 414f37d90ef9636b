package com.morrowfen.lumatrice.tour;

import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Optional;

/** Reads from the library's diagnostic log why a file was not imported. */
final class ImportLog {
    private final Path file;
    private long position;

    private ImportLog(Path file) {
        this.file = file;
    }

    static ImportLog ofHome() {
        String home = System.getenv("HOME");
        return new ImportLog(
                Path.of(home == null ? "" : home, ".lumatrice", "logs", "photos-native.log"));
    }

    /** Lines that stand in the log now are of no interest any more. */
    void skipToEnd() {
        try {
            position = Files.size(file);
        } catch (IOException noLogYet) {
            position = 0;
        }
    }

    /** What was logged since about a file of this name; empty if nothing was. */
    Optional<String> reasonFor(String filename) {
        String lines = newLines();
        String failed = "import failed for " + filename + ": ";
        int start = lines.indexOf(failed);
        if (start >= 0) {
            return Optional.of(lines.substring(start + failed.length()).strip());
        }
        return lines.contains("import skipped (unreadable): ")
                ? Optional.of("it cannot be read")
                : Optional.empty();
    }

    private String newLines() {
        try (RandomAccessFile log = new RandomAccessFile(file.toFile(), "r")) {
            log.seek(position);
            byte[] bytes = new byte[(int) Math.min(log.length() - position, 1 << 16)];
            log.readFully(bytes);
            return new String(bytes, StandardCharsets.UTF_8);
        } catch (IOException noLog) {
            return "";
        }
    }
}
