package com.morrowfen.lumatrice.service;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.LinkOption;
import java.nio.file.Path;
import java.nio.file.attribute.FileTime;
import java.util.Map;

/** What the file system says of a file or folder. */
final class FileFacts {
    private static final String NAMES = "unix:mode,uid,ino,size,lastModifiedTime,ctime";
    private static final int KIND = 0170000;
    private static final int FOLDER = 0040000;
    private static final int WRITABLE_BY_OTHERS = 022;
    private static final int WRITABLE_BY_ALL = 02;
    private static final int STICKY = 01000;

    private final Map<String, Object> facts;
    private final int mode;

    private FileFacts(Map<String, Object> facts) {
        this.facts = facts;
        mode = (Integer) facts.get("mode");
    }

    /** Of a link, not of what it points to. */
    static FileFacts of(Path file) throws IOException {
        return new FileFacts(Files.readAttributes(file, NAMES, LinkOption.NOFOLLOW_LINKS));
    }

    /** Of what a link points to. */
    static FileFacts behindLinks(Path file) throws IOException {
        return new FileFacts(Files.readAttributes(file, NAMES));
    }

    boolean isFolder() {
        return (mode & KIND) == FOLDER;
    }

    int owner() {
        return (Integer) facts.get("uid");
    }

    boolean isWritableByOthers() {
        return (mode & WRITABLE_BY_OTHERS) != 0;
    }

    /** Whether anybody may replace what lies in the folder. */
    boolean isFreeForAll() {
        return (mode & WRITABLE_BY_ALL) != 0 && (mode & STICKY) == 0;
    }

    /** Changes whenever the file's content does, or another file takes its place. */
    String fingerprint() {
        return mode + " " + facts.get("ino") + " " + facts.get("size") + " "
                + milliseconds("lastModifiedTime") + " " + milliseconds("ctime");
    }

    private long milliseconds(String name) {
        return ((FileTime) facts.get(name)).toMillis();
    }
}
