package com.morrowfen.lumatrice.service;

import java.nio.file.Path;

/** Where the user's cache is. */
final class CacheLocation {
    private CacheLocation() {}

    /** The folder for the extracted parts; null if no variable says where. Relative ones do not count. */
    static Path ofParts() {
        String cache = System.getenv("XDG_CACHE_HOME");
        if (cache != null && cache.startsWith("/")) {
            return Path.of(cache, "photos-kit");
        }
        String home = System.getenv("HOME");
        return home != null && home.startsWith("/") ? Path.of(home, ".cache", "photos-kit") : null;
    }
}
