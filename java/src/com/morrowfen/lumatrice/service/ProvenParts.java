package com.morrowfen.lumatrice.service;

import java.io.File;
import java.io.FileInputStream;
import java.io.FileOutputStream;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.InvalidPathException;
import java.nio.file.Path;
import java.util.Collection;

/**
 * The note beside extracted parts of what they looked like when they were proven to be the jar's.
 * As long as they look the same, a start costs a few questions to the file system: no part is read,
 * and no lock is waited for. It guards against damage and against other users; whoever may write
 * to this user's own folder can have anything loaded anyway.
 */
final class ProvenParts {
    private static final String NOTE = "proven";

    private ProvenParts() {}

    /** Notes the parts in a folder as they are. Before that, they must be proven. */
    static void note(Path folder, Collection<String> names) throws IOException {
        StringBuilder text = new StringBuilder();
        for (String name : names) {
            text.append(line(folder, name));
        }
        File unfinished = folder.resolve(NOTE + ".new").toFile();
        try (FileOutputStream out = new FileOutputStream(unfinished)) {
            out.write(text.toString().getBytes(StandardCharsets.ISO_8859_1));
        }
        if (!unfinished.renameTo(folder.resolve(NOTE).toFile())) {
            throw new IOException(unfinished + " cannot be renamed");
        }
    }

    /** The folder in this user's cache with such parts; null if there is none. */
    static Path find(String entry) {
        try {
            Path cache = CacheLocation.ofParts();
            return cache != null && areIn(cache.resolve(entry)) ? cache.resolve(entry) : null;
        } catch (InvalidPathException notInThisLocale) {
            return null;
        }
    }

    /**
     * Whether the parts in the folder are those that were proven, and both it and the cache are
     * this user's alone. If not, the long way round says what is wrong, or mends it.
     */
    private static boolean areIn(Path folder) {
        try {
            // First: from here on nobody sweeps the folder, or it is gone already.
            folder.resolve(CacheFolder.IN_USE).toFile().setLastModified(System.currentTimeMillis());
            // The process as a file belongs to its user, or to root if it must not be looked at.
            int user = FileFacts.behindLinks(Path.of("/proc/self")).owner();
            Path cache = folder.getParent();
            return !FileFacts.behindLinks(cache.getParent()).isFreeForAll()
                    && isOnlyOf(user, FileFacts.of(cache))
                    && isOnlyOf(user, FileFacts.of(folder))
                    && areAsNoted(folder);
        } catch (IOException | RuntimeException theLongWayRound) {
            return false;
        }
    }

    private static boolean isOnlyOf(int user, FileFacts folder) {
        return folder.isFolder() && !folder.isWritableByOthers() && folder.owner() == user;
    }

    /** Whether the parts look as they did when they were proven; whose they are is not asked. */
    static boolean areAsNoted(Path folder) {
        try {
            String note = read(folder.resolve(NOTE).toFile());
            int start = 0;
            while (start < note.length()) {
                String name = note.substring(start, note.indexOf(' ', start));
                String line = line(folder, name);
                if (!note.startsWith(line, start)) {
                    return false;
                }
                start += line.length();
            }
            return start > 0;
        } catch (IOException | RuntimeException noNoteOrPart) {
            return false;
        }
    }

    private static String line(Path folder, String name) throws IOException {
        return name + " " + FileFacts.of(folder.resolve(name)).fingerprint() + "\n";
    }

    private static String read(File file) throws IOException {
        try (FileInputStream in = new FileInputStream(file)) {
            return new String(in.readAllBytes(), StandardCharsets.ISO_8859_1);
        }
    }
}
