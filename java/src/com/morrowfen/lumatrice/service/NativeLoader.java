package com.morrowfen.lumatrice.service;

import java.io.File;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.InvalidPathException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;

/**
 * Finds and loads the native library: one copy in a process, whatever loads it. Looked at in turn
 * are the place that the system property {@code photos.kit.path} names, and nothing else if it is
 * set; the folders of {@code java.library.path}; those of an installed package; and at last the
 * parts in the jar, which are extracted.
 */
final class NativeLoader {
    static final String PATH_PROPERTY = "photos.kit.path";
    /** Names the file that is loaded into this process, for the other class loaders in it. */
    static final String MARK = "com.morrowfen.lumatrice.photos.loaded";

    /** The file that this class has loaded; guarded by the process-wide lock. */
    private static Path loaded;

    private NativeLoader() {}

    /** Loads the library from wherever it is found, if this class has not loaded it yet. */
    static void load() {
        synchronized (processWideLock()) {
            if (loaded == null) {
                search();
            }
        }
    }

    /** Loads the library from a file. */
    static void load(Path file) {
        synchronized (processWideLock()) {
            loadOnce(file.toAbsolutePath());
        }
    }

    /** One object for all class loaders: literals are interned by the JVM. */
    static Object processWideLock() {
        return MARK.intern();
    }

    private static void search() {
        Platform platform = Platform.current();
        String chosen = System.getProperty(PATH_PROPERTY);
        if (chosen != null && !chosen.isEmpty()) {
            loadAndExplain(chosenFile(chosen, platform));
            return;
        }
        List<UnsatisfiedLinkError> failures = new ArrayList<>();
        for (Path file : installedFiles(platform)) {
            try {
                loadOnce(file);
                return;
            } catch (UnsatisfiedLinkError tryTheNextOne) {
                failures.add(tryTheNextOne);
            }
        }
        try {
            loadAndExplain(packedLibrary(platform));
        } catch (PhotosLoadException problem) {
            throw failures.isEmpty() ? problem : afterInstalledOnes(failures, problem);
        }
    }

    private static Path packedLibrary(Platform platform) {
        String entry = PackedParts.entry(platform);
        Path folder = entry == null ? null : ProvenParts.find(entry);
        if (folder == null) {
            return Extraction.library(platform);
        }
        new CacheKeeper(folder).start();
        return folder.resolve(platform.library());
    }

    private static PhotosLoadException afterInstalledOnes(
            List<UnsatisfiedLinkError> failures, PhotosLoadException last) {
        PhotosLoadException all = new PhotosLoadException(last.getMessage()
                + " An installed copy could not be loaded either: " + failures.get(0).getMessage(),
                last);
        failures.forEach(all::addSuppressed);
        return all;
    }

    private static Path chosenFile(String chosen, Platform platform) {
        try {
            Path place = Path.of(chosen).toAbsolutePath();
            Path file = Files.isDirectory(place) ? place.resolve(platform.library()) : place;
            if (Files.isRegularFile(file)) {
                return file;
            }
        } catch (InvalidPathException unusable) {
            throw new PhotosLoadException("The system property " + PATH_PROPERTY + " holds no path: "
                    + unusable.getMessage(), unusable);
        }
        throw new PhotosLoadException("The system property " + PATH_PROPERTY + " names " + chosen
                + ", but there is no " + platform.library() + ". Let it name the file or its"
                + " folder, or leave it out.");
    }

    private static List<Path> installedFiles(Platform platform) {
        List<Path> files = new ArrayList<>();
        for (String folder : System.getProperty("java.library.path", "").split(File.pathSeparator)) {
            // A relative one would load from wherever the program happens to stand.
            if (folder.startsWith("/")) {
                addFile(files, folder, platform);
            }
        }
        for (String folder : platform.installed()) {
            addFile(files, folder, platform);
        }
        return files;
    }

    private static void addFile(List<Path> files, String folder, Platform platform) {
        File file = new File(folder, platform.library());
        // To a File every text is a path, even one that this locale has no bytes for.
        if (file.isFile() && !files.contains(file.toPath())) {
            files.add(file.toPath());
        }
    }

    private static void loadAndExplain(Path file) {
        try {
            loadOnce(file);
        } catch (UnsatisfiedLinkError problem) {
            throw new PhotosLoadException(explanation(file, String.valueOf(problem.getMessage())),
                    problem);
        }
    }

    private static String explanation(Path file, String message) {
        String what = "The photo library's native part " + file + " cannot be loaded: " + message
                + ". ";
        if (message.contains("failed to map segment")) {
            return what + "Its file system seems to be mounted noexec: set the environment variable"
                    + " XDG_CACHE_HOME to a folder elsewhere, or let the system property "
                    + PATH_PROPERTY + " name an installed copy.";
        }
        if (message.contains("cannot open shared object file")) {
            return what + "Install the library that it names.";
        }
        return what + "Let the system property " + PATH_PROPERTY
                + " name a copy that is made for this system.";
    }

    /** The file's own name counts, so that a link to it is no second copy. */
    private static void loadOnce(Path file) {
        Path real = realPath(file);
        if (real.equals(loaded)) {
            return;
        }
        String marked = System.getProperty(MARK);
        if (marked != null && !marked.equals(real.toString())) {
            throw secondCopy(marked, null);
        }
        try {
            System.load(real.toString());
        } catch (UnsatisfiedLinkError problem) {
            // Also when the mark is there: its class loader may have gone since.
            if (String.valueOf(problem.getMessage()).contains("already loaded in another")) {
                throw secondCopy(real.toString(), problem);
            }
            throw problem;
        } catch (IllegalCallerException refused) {
            throw refusal(refused);
        }
        loaded = real;
        System.setProperty(MARK, real.toString());
    }

    private static Path realPath(Path file) {
        try {
            return file.toRealPath();
        } catch (IOException absent) {
            UnsatisfiedLinkError problem = new UnsatisfiedLinkError("Can't load library: " + file);
            problem.initCause(absent);
            throw problem;
        }
    }

    private static PhotosLoadException secondCopy(String marked, Throwable cause) {
        return new PhotosLoadException("This process has loaded the photo library already, from "
                + marked + ", through another class loader or from another file; two copies would"
                + " work against each other. Load these classes once, in a class loader that all"
                + " users of them share.", cause);
    }

    /** From JDK 24 on the JVM may be told to let named modules alone load native libraries. */
    private static PhotosLoadException refusal(IllegalCallerException refused) {
        Module module = NativeLoader.class.getModule();
        return new PhotosLoadException("This JVM does not let the photo library load its native"
                + " part. Start java with --enable-native-access="
                + (module.isNamed() ? module.getName() : "ALL-UNNAMED") + ".", refused);
    }
}
