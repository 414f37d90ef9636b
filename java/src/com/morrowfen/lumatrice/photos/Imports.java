package com.morrowfen.lumatrice.photos;

import com.morrowfen.lumatrice.service.PhotosService;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Objects;

/** Sends the files whose names can cross, and puts the answers in the place of their files. */
final class Imports {
    private Imports() {}

    static List<ImportResult> run(PhotosService photos, List<Path> files) {
        List<String> problems = new ArrayList<>();
        List<String> sent = new ArrayList<>();
        for (Path file : files) {
            String problem = Arguments.problemWithPath(Objects.requireNonNull(file, "file"));
            problems.add(problem);
            if (problem == null) {
                sent.add(file.toFile().getAbsolutePath());
            }
        }
        String[] ids = sent.isEmpty() ? null
                : photos.nativeImportAssets(sent.toArray(String[]::new));
        List<ImportResult> results = new ArrayList<>();
        int next = 0;
        for (int i = 0; i < files.size(); ++i) {
            results.add(problems.get(i) != null
                    ? ImportResult.failed(files.get(i), problems.get(i))
                    : ImportResult.of(files.get(i), ids == null ? null : ids[next++]));
        }
        return List.copyOf(results);
    }
}
