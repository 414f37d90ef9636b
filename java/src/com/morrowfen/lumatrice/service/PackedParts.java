package com.morrowfen.lumatrice.service;

import java.util.Map;
import java.util.TreeMap;

/**
 * What native parts this jar holds. The list is part of a class, because a class is at hand long
 * before a resource of a jar is.
 */
final class PackedParts {
    /**
     * A line for each platform, with the SHA-256 of its parts' sums, by which they are called in
     * the cache; then a line for each part with its CRC-32. scripts/package-jar fills it in.
     */
    private static final String LIST = """
            """;

    private PackedParts() {}

    /** The name in the cache; null if there are no parts for the platform. */
    static String entry(Platform platform) {
        int start = start(platform);
        return start < 0 ? null : LIST.substring(start, LIST.indexOf('\n', start));
    }

    /** The CRC-32 of each part, by name. */
    static Map<String, Long> sums(Platform platform) {
        Map<String, Long> sums = new TreeMap<>();
        String[] lines = LIST.substring(start(platform)).split("\n");
        for (int i = 1; i < lines.length && lines[i].startsWith(" "); ++i) {
            String[] words = lines[i].substring(1).split(" ");
            sums.put(words[0], Long.parseLong(words[1], 16));
        }
        return sums;
    }

    private static int start(Platform platform) {
        String words = platform.folder() + " ";
        if (LIST.startsWith(words)) {
            return words.length();
        }
        int line = LIST.indexOf("\n" + words);
        return line < 0 ? -1 : line + 1 + words.length();
    }
}
