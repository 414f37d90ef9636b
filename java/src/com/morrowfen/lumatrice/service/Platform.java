package com.morrowfen.lumatrice.service;

import java.io.InputStream;
import java.util.Locale;

/** The system that this JVM runs on, by the names of our files and folders. */
record Platform(String folder, String library, String... installed) {
    static Platform current() {
        return of(System.getProperty("os.name", ""), System.getProperty("os.arch", ""));
    }

    static Platform of(String system, String processor) {
        boolean isMac = system.startsWith("Mac");
        String kind = switch (processor.toLowerCase(Locale.ROOT)) {
            case "amd64", "x86_64" -> "x86_64";
            case "aarch64", "arm64" -> "aarch64";
            default -> null;
        };
        if (kind == null || !(isMac || system.equals("Linux"))) {
            throw new PhotosLoadException("The photo library does not run on " + system + " with a "
                    + processor + " JVM, only on Linux and macOS with a 64-bit one for x86_64 or"
                    + " arm64.");
        }
        if (isMac) {
            return new Platform("osx-universal", "libphotos_kit.dylib");
        }
        String libraries = "/usr/lib/" + kind + "-linux-gnu";
        // Debian's place for JNI libraries comes first: not every JDK has it in java.library.path.
        return new Platform("linux-" + kind, "libphotos_kit.so", libraries + "/jni",
                libraries, libraries + "/photos-kit");
    }

    /** One of the native parts that came with these classes; null if there is none of this name. */
    InputStream part(String name) {
        return Platform.class.getResourceAsStream("/native/" + folder + "/" + name);
    }
}
