package com.morrowfen.lumatrice.service;

import static java.nio.file.StandardOpenOption.CREATE_NEW;
import static java.nio.file.StandardOpenOption.WRITE;

import java.io.IOException;
import java.io.InputStream;
import java.io.UncheckedIOException;
import java.nio.ByteBuffer;
import java.nio.channels.FileChannel;
import java.nio.file.Files;
import java.nio.file.LinkOption;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.util.Arrays;
import java.util.Map;
import java.util.Objects;
import java.util.Set;
import java.util.zip.CRC32;

/**
 * The native parts of the jar, extracted side by side into the user's cache: one folder for each
 * content, {@code photos-kit/<hash of the parts>}. It is written beside under another name and
 * moved into place when it is complete and on disk; the parts in it do not change after that.
 */
final class Extraction {
    private static final int BUFFER = 1 << 16;

    private final Platform platform;
    private final CacheFolder cache;

    private Extraction(Platform platform, CacheFolder cache) {
        this.platform = platform;
        this.cache = cache;
    }

    /** The library, extracted if need be, and proven to be what the jar holds. */
    static Path library(Platform platform) {
        String entry = PackedParts.entry(platform);
        if (entry == null) {
            throw new PhotosLoadException("The photo library is not installed, and this jar"
                    + " holds no native parts for " + platform.folder() + ". Install it, or let"
                    + " the system property " + NativeLoader.PATH_PROPERTY + " name the file "
                    + platform.library() + ".");
        }
        try (CacheFolder cache = CacheFolder.open()) {
            return new Extraction(platform, cache).ready(entry).resolve(platform.library());
        } catch (IOException atClosing) {
            throw new UncheckedIOException(atClosing);
        }
    }

    private Path ready(String entry) {
        Path folder = cache.entry(entry);
        try {
            boolean isThere = Files.exists(folder, LinkOption.NOFOLLOW_LINKS);
            if (!isThere) {
                extract(folder);
            }
            cache.checkFolder(folder);
            cache.hold(folder);
            if (isThere && !ProvenParts.areAsNoted(folder)) {
                prove(folder);
            }
        } catch (IOException problem) {
            throw cache.unwritable(problem);
        }
        cache.sweep(folder);
        return folder;
    }

    private void extract(Path folder) throws IOException {
        Path made = cache.makeUnfinished();
        try {
            Map<String, Long> sums = PackedParts.sums(platform);
            for (Map.Entry<String, Long> part : sums.entrySet()) {
                write(part.getKey(), part.getValue(), made.resolve(part.getKey()));
            }
            CacheFolder.makeInUse(made);
            ProvenParts.note(made, sums.keySet());
            CacheFolder.sync(made);
            Files.move(made, folder, StandardCopyOption.ATOMIC_MOVE);
            CacheFolder.sync(folder.getParent());
        } catch (IOException problem) {
            throw cache.unwritable(problem); // now, while a full disk still shows
        } finally {
            CacheFolder.removeQuietly(made);
        }
    }

    private void write(String name, long sum, Path file) throws IOException {
        CRC32 read = new CRC32();
        try (InputStream in = platform.part(name);
                FileChannel out = FileChannel.open(file, Set.of(CREATE_NEW, WRITE),
                        CacheFolder.forOwner("rwx------"))) {
            byte[] buffer = new byte[BUFFER];
            for (int length; (length = read(in, buffer, name)) >= 0; ) {
                read.update(buffer, 0, length);
                ByteBuffer left = ByteBuffer.wrap(buffer, 0, length);
                while (left.hasRemaining()) {
                    out.write(left);
                }
            }
            out.force(true);
        }
        if (read.getValue() != sum) {
            throw damagedJar(name, null);
        }
    }

    private int read(InputStream in, byte[] buffer, String name) {
        try {
            return Objects.requireNonNull(in, "not in the jar").read(buffer);
        } catch (IOException | NullPointerException problem) {
            throw damagedJar(name, problem);
        }
    }

    /** Compares each part with the jar's, byte by byte. */
    private void prove(Path folder) throws IOException {
        Map<String, Long> sums = PackedParts.sums(platform);
        for (String name : sums.keySet()) {
            Path file = folder.resolve(name);
            if (!Files.isRegularFile(file, LinkOption.NOFOLLOW_LINKS) || !isAsInJar(file, name)) {
                throw changed(file);
            }
        }
        ProvenParts.note(folder, sums.keySet());
    }

    private boolean isAsInJar(Path file, String name) throws IOException {
        byte[] packed = new byte[BUFFER];
        byte[] extracted = new byte[BUFFER];
        try (InputStream in = platform.part(name);
                InputStream copy = Files.newInputStream(file, LinkOption.NOFOLLOW_LINKS)) {
            for (int length; (length = read(in, packed, name)) >= 0; ) {
                if (copy.readNBytes(extracted, 0, length) < length
                        || Arrays.mismatch(packed, 0, length, extracted, 0, length) >= 0) {
                    return false;
                }
            }
            return copy.read() < 0;
        }
    }

    private static PhotosLoadException changed(Path file) {
        return new PhotosLoadException("The extracted file " + file + " is not what the jar holds:"
                + " it is damaged, or somebody has changed it. Remove the folder "
                + file.getParent() + ", and it is extracted anew; or let the system property "
                + NativeLoader.PATH_PROPERTY + " name an installed copy.");
    }

    private PhotosLoadException damagedJar(String name, Exception cause) {
        return new PhotosLoadException("The native part " + name + " for " + platform.folder()
                + " in the jar is missing or damaged; get the jar anew.", cause);
    }
}
