package com.morrowfen.lumatrice.service;

import static java.nio.file.StandardOpenOption.CREATE;
import static java.nio.file.StandardOpenOption.CREATE_NEW;
import static java.nio.file.StandardOpenOption.READ;
import static java.nio.file.StandardOpenOption.WRITE;

import java.io.Closeable;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.channels.FileChannel;
import java.nio.channels.FileLock;
import java.nio.channels.OverlappingFileLockException;
import java.nio.file.AccessDeniedException;
import java.nio.file.DirectoryStream;
import java.nio.file.FileAlreadyExistsException;
import java.nio.file.FileVisitResult;
import java.nio.file.Files;
import java.nio.file.InvalidPathException;
import java.nio.file.LinkOption;
import java.nio.file.NoSuchFileException;
import java.nio.file.Path;
import java.nio.file.SimpleFileVisitor;
import java.nio.file.StandardCopyOption;
import java.nio.file.attribute.BasicFileAttributes;
import java.nio.file.attribute.FileAttribute;
import java.nio.file.attribute.PosixFilePermissions;
import java.time.Duration;
import java.time.Instant;
import java.util.ArrayList;
import java.util.List;
import java.util.Set;

/**
 * The folder {@code photos-kit} in the user's cache, locked against other processes while it is
 * open. It must be this user's alone: whoever can write there could have any code loaded.
 *
 * <p>Only the holder of the lock writes. So whatever has an unfinished name while somebody else
 * takes the lock was left by a process that died. A folder that is in use is held by a shared
 * lock on the file {@code in-use} in it, for as long as the process lives; until a process that
 * starts has that lock, the file's new time keeps the folder from being swept.
 */
final class CacheFolder implements Closeable {
    /** How long a folder of other content is kept after it was last loaded from. */
    static final Duration KEPT = Duration.ofDays(90);

    private static final String UNFINISHED = ".unfinished-";
    private static final String LOCK = ".lock";
    static final String IN_USE = "in-use";

    /** Never closed: that would drop the locks that this process holds on the same file. */
    private static final List<FileChannel> HELD = new ArrayList<>();

    private final Path root;
    private final FileChannel lock;

    private CacheFolder(Path root) throws IOException {
        this.root = root;
        checkFolder(root);
        lock = FileChannel.open(root.resolve(LOCK), Set.of(CREATE, WRITE, LinkOption.NOFOLLOW_LINKS),
                forOwner("rw-------"));
        try {
            lock.lock();
        } catch (IOException problem) {
            lock.close();
            throw problem;
        }
    }

    /** Makes the folder if need be, and waits until no other process has it open. */
    static CacheFolder open() {
        Path root = null;
        try {
            root = CacheLocation.ofParts();
            if (root == null) {
                throw noLocation();
            }
            makeFolders(root);
            return new CacheFolder(root);
        } catch (IOException problem) {
            throw unwritable(root, problem);
        } catch (InvalidPathException unusable) {
            throw new PhotosLoadException("The name of the cache folder cannot be expressed in the"
                    + " locale of this JVM (" + unusable.getMessage() + "). Start it in a UTF-8"
                    + " locale, or let the system property " + NativeLoader.PATH_PROPERTY
                    + " name an installed copy.", unusable);
        }
    }

    @Override
    public void close() throws IOException {
        lock.close();
    }

    Path entry(String hash) {
        return root.resolve(hash);
    }

    /** A new folder that is swept if it does not get another name. */
    Path makeUnfinished() throws IOException {
        try {
            return Files.createDirectory(newName(), forOwner("rwx------"));
        } catch (IOException problem) {
            throw unwritable(problem);
        }
    }

    /** Complains of a folder that others than this user could have written to. */
    void checkFolder(Path folder) throws IOException {
        FileFacts facts = FileFacts.of(folder);
        if (!facts.isFolder()) {
            throw unsafe(folder, "is a link, or no folder");
        }
        if (facts.isWritableByOthers()) {
            throw unsafe(folder, "can be written to by others than its owner");
        }
        if (facts.owner() != userId()) {
            throw unsafe(folder, "belongs to another user, " + Files.getOwner(folder));
        }
    }

    /** Keeps a folder from being swept while this process lives. */
    void hold(Path folder) throws IOException {
        Path file = folder.resolve(IN_USE);
        FileChannel channel = FileChannel.open(file,
                Set.of(CREATE, READ, WRITE, LinkOption.NOFOLLOW_LINKS), forOwner("rw-------"));
        HELD.add(channel);
        try {
            channel.lock(0, Long.MAX_VALUE, true);
        } catch (OverlappingFileLockException heldThroughAnotherClassLoader) {
            // Good as well.
        }
        touch(channel);
    }

    /** By writing: whatever opens and closes the file in this process drops its lock. */
    private static void touch(FileChannel channel) throws IOException {
        channel.write(ByteBuffer.wrap(new byte[] {'\n'}), 0);
    }

    /** Removes what dead processes left, and other content that nobody has used for long. */
    void sweep(Path current) {
        try (DirectoryStream<Path> all = Files.newDirectoryStream(root)) {
            for (Path one : all) {
                String name = one.getFileName().toString();
                if (name.startsWith(UNFINISHED)) {
                    removeQuietly(one);
                } else if (name.matches("[0-9a-f]{64}") && !one.equals(current)
                        && !isLoadedHere(one)) {
                    sweepUnused(one);
                }
            }
        } catch (IOException | RuntimeException anotherTime) {
            // Sweeping is a favour; what is left is tried again at the next start.
        }
    }

    private void sweepUnused(Path folder) throws IOException {
        Path file = folder.resolve(IN_USE);
        if (!Files.isRegularFile(file, LinkOption.NOFOLLOW_LINKS) || !isOld(file)) {
            return;
        }
        try (FileChannel channel = FileChannel.open(file, WRITE, LinkOption.NOFOLLOW_LINKS);
                FileLock mine = channel.tryLock()) {
            if (mine == null) {
                return;
            }
            // Under an unfinished name, so that half of it is never taken for the whole.
            Path goes = root.resolve(UNFINISHED + folder.getFileName());
            Files.move(folder, goes, StandardCopyOption.ATOMIC_MOVE);
            if (isOld(goes.resolve(IN_USE))) {
                removeQuietly(goes);
            } else { // a process has begun to use it meanwhile
                Files.move(goes, folder, StandardCopyOption.ATOMIC_MOVE);
            }
        }
    }

    /** To close a file of it would drop the lock that another class loader holds. */
    private static boolean isLoadedHere(Path folder) {
        return System.getProperty(NativeLoader.MARK, "").startsWith(folder + "/");
    }

    private static boolean isOld(Path file) throws IOException {
        Instant used = Files.getLastModifiedTime(file, LinkOption.NOFOLLOW_LINKS).toInstant();
        return used.isBefore(Instant.now().minus(KEPT));
    }

    static void makeInUse(Path folder) throws IOException {
        try (FileChannel made = FileChannel.open(folder.resolve(IN_USE), Set.of(CREATE_NEW, WRITE),
                forOwner("rw-------"))) {
            touch(made);
        }
    }

    /** So that a power cut leaves all or nothing; where that can be had. */
    static void sync(Path folder) {
        try (FileChannel channel = FileChannel.open(folder, READ)) {
            channel.force(true);
        } catch (IOException notOnThisFileSystem) {
            // Nor do renames have to be durable there.
        }
    }

    static FileAttribute<?> forOwner(String permissions) {
        return PosixFilePermissions.asFileAttribute(PosixFilePermissions.fromString(permissions));
    }

    static void removeQuietly(Path folder) {
        try {
            Files.walkFileTree(folder, new SimpleFileVisitor<>() {
                @Override
                public FileVisitResult visitFile(Path file, BasicFileAttributes attributes)
                        throws IOException {
                    Files.delete(file);
                    return FileVisitResult.CONTINUE;
                }

                @Override
                public FileVisitResult postVisitDirectory(Path emptied, IOException problem)
                        throws IOException {
                    Files.delete(emptied);
                    return FileVisitResult.CONTINUE;
                }
            });
        } catch (IOException goneOrSweptLater) {
            // The next start tries again.
        }
    }

    PhotosLoadException unwritable(IOException problem) {
        return unwritable(root, problem);
    }

    private static PhotosLoadException unwritable(Path root, IOException problem) {
        return new PhotosLoadException("The photo library's native parts cannot be extracted to "
                + root + (isFull(root) ? ": the disk is full" : "") + " (" + problem + "). Make room"
                + " or let this user write there, set the environment variable XDG_CACHE_HOME to"
                + " another folder, or let the system property " + NativeLoader.PATH_PROPERTY
                + " name an installed copy.", problem);
    }

    private static boolean isFull(Path root) {
        try {
            return Files.getFileStore(root).getUsableSpace() < 1 << 16;
        } catch (IOException unknown) {
            return false;
        }
    }

    private static PhotosLoadException unsafe(Path folder, String what) {
        return new PhotosLoadException("The folder for the photo library's native parts, " + folder
                + ", " + what + ", so nothing is loaded from there. Remove it, set the environment"
                + " variable XDG_CACHE_HOME to a folder of your own, or let the system property "
                + NativeLoader.PATH_PROPERTY + " name an installed copy.");
    }

    private static PhotosLoadException noLocation() {
        return new PhotosLoadException("There is no folder to extract the photo library's native"
                + " parts to: the environment variables XDG_CACHE_HOME and HOME are unset. Set one"
                + " of them, or let the system property " + NativeLoader.PATH_PROPERTY
                + " name an installed copy.");
    }

    private static void makeFolders(Path root) throws IOException {
        if (!Files.isDirectory(root.getParent())) { // a link to one is as good
            Files.createDirectories(root.getParent(), forOwner("rwx------"));
        }
        if (FileFacts.behindLinks(root.getParent()).isFreeForAll()) {
            throw unsafe(root.getParent(), "can be written to by everybody");
        }
        if (!Files.exists(root, LinkOption.NOFOLLOW_LINKS)) {
            makeOrFind(root);
        }
    }

    private static void makeOrFind(Path root) throws IOException {
        try {
            Files.createDirectory(root, forOwner("rwx------"));
        } catch (FileAlreadyExistsException anotherProcessWasFaster) {
            // It is checked like any that was there.
        }
    }

    /** This process's user, as the file system sees it: the owner of what it makes. */
    private int userId() throws IOException {
        while (true) {
            Path mine = newFile();
            try {
                return FileFacts.of(mine).owner();
            } catch (NoSuchFileException sweptByTheHolderOfTheLock) {
                // Made before we hold it ourselves; the next one may stay.
            } finally {
                Files.deleteIfExists(mine);
            }
        }
    }

    /** Only this user can write here, so that nobody guesses names to be in the way. */
    private Path newName() {
        return root.resolve(UNFINISHED + ProcessHandle.current().pid() + "-" + System.nanoTime());
    }

    private Path newFile() throws IOException {
        try {
            return Files.createFile(newName(), forOwner("rw-------"));
        } catch (AccessDeniedException denied) {
            throw unsafe(root, "belongs to " + Files.getOwner(root)
                    + " and cannot be written to by this user");
        }
    }
}
