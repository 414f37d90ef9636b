package com.morrowfen.lumatrice.photos;

import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.Objects;

/** Guards what goes into the native library: null never does, nor text that it would not get. */
final class Arguments {
    private Arguments() {}

    static String text(String name, String value) {
        Objects.requireNonNull(value, name);
        String problem = problemWith(value);
        if (problem != null) {
            throw new IllegalArgumentException(name + ": " + problem);
        }
        return value;
    }

    static String filledText(String name, String value) {
        if (text(name, value).isEmpty()) {
            throw new IllegalArgumentException(name + " is empty");
        }
        return value;
    }

    static String[] texts(String name, List<String> values) {
        String[] all = values.toArray(String[]::new);
        for (String one : all) {
            text(name, one);
        }
        return all;
    }

    static String path(String name, Path value) {
        return text(name, absolute(name, value));
    }

    /** A file to write: the library would remove a folder that stands there, with all it holds. */
    static String newFile(String name, Path value) {
        String path = path(name, value);
        if (Files.isDirectory(value)) {
            throw new IllegalArgumentException(name + " is a folder: " + value);
        }
        return path;
    }

    /** Why the library would not get a file's name as it is; null if it would. */
    static String problemWithPath(Path value) {
        return problemWith(absolute("path", value));
    }

    private static String absolute(String name, Path value) {
        Objects.requireNonNull(value, name);
        try {
            return value.toFile().getAbsolutePath();
        } catch (UnsupportedOperationException elsewhere) {
            throw new IllegalArgumentException(name + " is not on the default file system: "
                    + value, elsewhere);
        }
    }

    private static String problemWith(String text) {
        for (int i = 0; i < text.length(); ++i) {
            char unit = text.charAt(i);
            if (unit == 0 || Character.isSurrogate(unit)) {
                return String.format("U+%04X at character %d cannot cross into the photo library,"
                        + " which takes U+0001 to U+FFFF only", text.codePointAt(i), i);
            }
        }
        return null;
    }
}
