package com.morrowfen.lumatrice.service;

import java.io.IOException;
import java.io.InputStream;
import java.nio.charset.StandardCharsets;
import java.security.DigestInputStream;
import java.security.MessageDigest;
import java.security.NoSuchAlgorithmException;
import java.util.HexFormat;
import java.util.Map;
import java.util.TreeMap;

/** The native parts for a platform, by name, with the SHA-256 of each; and that of the list. */
record PartList(Map<String, String> hashes, String hash) {
    /** Reads a list as {@code sha256sum} writes it. */
    static PartList of(byte[] text) {
        Map<String, String> hashes = new TreeMap<>();
        for (String line : new String(text, StandardCharsets.UTF_8).split("\n")) {
            String[] words = line.split(" [ *]", 2);
            if (words.length != 2 || !words[0].matches("[0-9a-f]{64}")
                    || !words[1].matches("[A-Za-z0-9_][A-Za-z0-9._-]*")) {
                throw new PhotosLoadException(
                        "The list of native parts in the jar is damaged; get the jar anew.");
            }
            hashes.put(words[1], words[0]);
        }
        return new PartList(hashes, HexFormat.of().formatHex(sha256().digest(text)));
    }

    static MessageDigest sha256() {
        try {
            return MessageDigest.getInstance("SHA-256");
        } catch (NoSuchAlgorithmException everyJdkHasIt) {
            throw new AssertionError(everyJdkHasIt);
        }
    }

    static String hashOf(InputStream in) throws IOException {
        MessageDigest digest = sha256();
        try (DigestInputStream all = new DigestInputStream(in, digest)) {
            byte[] buffer = new byte[1 << 16];
            while (all.read(buffer) >= 0) { }
        }
        return HexFormat.of().formatHex(digest.digest());
    }
}
