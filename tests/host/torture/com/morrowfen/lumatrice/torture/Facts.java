package com.morrowfen.lumatrice.torture;

import java.io.IOException;
import java.io.UncheckedIOException;
import java.nio.ByteBuffer;
import java.nio.channels.FileChannel;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.util.ArrayList;
import java.util.HashMap;
import java.util.HashSet;
import java.util.List;
import java.util.Map;
import java.util.Set;
import java.util.stream.Stream;

/** What a process knows to be so, line by line in a file that outlives it. */
final class Facts {
    private final FileChannel file;

    Facts(Path path) throws IOException {
        file = FileChannel.open(path, StandardOpenOption.CREATE, StandardOpenOption.APPEND);
    }

    void add(String... words) {
        ByteBuffer line = ByteBuffer.wrap(
                (String.join(" ", words) + "\n").getBytes(StandardCharsets.UTF_8));
        try {
            file.write(line);
        } catch (IOException failure) {
            throw new UncheckedIOException(failure);
        }
    }

    /** All processes' facts together. */
    static final class All {
        final Map<String, Integer> imported = new HashMap<>();
        final Set<String> perhapsDeleted = new HashSet<>();
        final Map<String, Integer> calls = new HashMap<>();
        final List<String> faults = new ArrayList<>();
    }

    static All read(Path folder) throws IOException {
        All all = new All();
        List<Path> files;
        try (Stream<Path> found = Files.list(folder)) {
            files = found.filter(path -> path.toString().endsWith(".facts")).toList();
        }
        for (Path file : files) {
            Files.readAllLines(file).forEach(line -> take(line.split(" ", 3), all));
        }
        return all;
    }

    private static void take(String[] words, All all) {
        switch (words[0]) {
            case "imported" -> all.imported.put(words[1], Integer.valueOf(words[2]));
            case "deleting" -> all.perhapsDeleted.add(words[1]);
            case "calls" -> all.calls.merge(words[1], Integer.parseInt(words[2]), Integer::sum);
            default -> all.faults.add(String.join(" ", words));
        }
    }
}
