package com.morrowfen.lumatrice.photos;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;

/** The folder for the files of one edit, which only this user can look into. */
final class EditFolder {
    /** What is done in the folder. */
    interface Work {
        void in(Path folder) throws IOException;
    }

    private EditFolder() {}

    static void with(Work work) throws IOException {
        Path folder = Files.createTempDirectory("photos-kit-edit");
        try {
            work.in(folder);
        } finally {
            remove(folder);
        }
    }

    private static void remove(Path folder) throws IOException {
        try (var files = Files.newDirectoryStream(folder)) {
            for (Path file : files) {
                Files.deleteIfExists(file);
            }
        }
        Files.deleteIfExists(folder);
    }
}
