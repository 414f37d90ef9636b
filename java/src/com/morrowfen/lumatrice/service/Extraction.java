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
import java.nio.file.NoSuchFileException;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.util.Map;
import java.util.Objects;
import java.util.Set;

/**
 * The native parts of the jar, extracted side by side into the user's cache: one folder for each
 * content, {@code photos-kit/<hash of the list of parts>}. It is written beside under another name
 * and moved into place when it is complete and on disk; nothing in it changes after that.
 */
final class Extraction {
    private final Platform platform;
    private final PartList parts;
    private final CacheFolder cache;

    private Extraction(Platform platform, PartList parts, CacheFolder cache) {
        this.platform = platform;
        this.parts = parts;
        this.cache = cache;
    }

    /** The library, extracted if need be, and proven to be what the jar's list says. */
    static Path library(Platform platform) {
        PartList parts = listOfParts(platform);
        try (CacheFolder cache = CacheFolder.open()) {
            return new Extraction(platform, parts, cache).ready().resolve(platform.library());
        } catch (IOException atClosing) {
            throw new UncheckedIOException(atClosing);
        }
    }

    private static PartList listOfParts(Platform platform) {
        try (InputStream list = platform.part(Platform.LIST)) {
            if (list == null) {
                throw new PhotosLoadException("The photo library is not installed, and this jar"
                        + " holds no native parts for " + platform.folder() + ". Install it, or let"
                        + " the system property " + NativeLoader.PATH_PROPERTY + " name the file "
                        + platform.library() + ".");
            }
            return PartList.of(list.readAllBytes());
        } catch (IOException problem) {
            throw damagedJar(platform, Platform.LIST, problem);
        }
    }

    private Path ready() {
        Path folder = cache.entry(parts.hash());
        try {
            if (!Files.exists(folder, LinkOption.NOFOLLOW_LINKS)) {
                extract(folder);
            }
            prove(folder);
        } catch (IOException problem) {
            throw cache.unwritable(problem);
        }
        cache.sweep(folder);
        return folder;
    }

    private void prove(Path folder) throws IOException {
        cache.checkFolder(folder);
        cache.hold(folder);
        for (Map.Entry<String, String> part : parts.hashes().entrySet()) {
            check(folder.resolve(part.getKey()), part.getValue());
        }
    }

    private void extract(Path folder) throws IOException {
        Path made = cache.makeUnfinished();
        try {
            for (String name : parts.hashes().keySet()) {
                write(name, made.resolve(name));
            }
            CacheFolder.makeInUse(made);
            CacheFolder.sync(made);
            Files.move(made, folder, StandardCopyOption.ATOMIC_MOVE);
            CacheFolder.sync(folder.getParent());
        } catch (IOException problem) {
            throw cache.unwritable(problem); // now, while a full disk still shows
        } finally {
            CacheFolder.removeQuietly(made);
        }
    }

    private void write(String name, Path file) throws IOException {
        try (InputStream in = platform.part(name);
                FileChannel out = FileChannel.open(file, Set.of(CREATE_NEW, WRITE),
                        CacheFolder.forOwner("rwx------"))) {
            byte[] buffer = new byte[1 << 16];
            for (int length; (length = read(in, buffer, name)) >= 0; ) {
                ByteBuffer left = ByteBuffer.wrap(buffer, 0, length);
                while (left.hasRemaining()) {
                    out.write(left);
                }
            }
            out.force(true);
        }
        try (InputStream written = Files.newInputStream(file)) {
            if (!PartList.hashOf(written).equals(parts.hashes().get(name))) {
                throw damagedJar(platform, name, null);
            }
        }
    }

    private int read(InputStream in, byte[] buffer, String name) {
        try {
            return Objects.requireNonNull(in, "not in the jar").read(buffer);
        } catch (IOException | NullPointerException problem) {
            throw damagedJar(platform, name, problem);
        }
    }

    private void check(Path file, String hash) throws IOException {
        if (Files.isRegularFile(file, LinkOption.NOFOLLOW_LINKS) && hash.equals(hashOf(file))) {
            return;
        }
        throw new PhotosLoadException("The extracted file " + file + " is not what the jar holds:"
                + " it is damaged, or somebody has changed it. Remove the folder "
                + file.getParent() + ", and it is extracted anew; or let the system property "
                + NativeLoader.PATH_PROPERTY + " name an installed copy.");
    }

    private static String hashOf(Path file) throws IOException {
        try (InputStream in = Files.newInputStream(file, LinkOption.NOFOLLOW_LINKS)) {
            return PartList.hashOf(in);
        } catch (NoSuchFileException gone) {
            return "";
        }
    }

    private static PhotosLoadException damagedJar(Platform platform, String name, Exception cause) {
        return new PhotosLoadException("The native part " + name + " for " + platform.folder()
                + " in the jar is missing or damaged; get the jar anew.", cause);
    }
}
