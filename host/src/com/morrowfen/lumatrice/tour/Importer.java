package com.morrowfen.lumatrice.tour;

import com.morrowfen.lumatrice.service.PhotosService;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.SortedMap;
import java.util.TreeMap;

/** Imports files one call each, so that progress shows and each outcome has its file. */
final class Importer {
    private final PhotosService photos;
    private final ImportLog log;

    Importer(PhotosService photos, ImportLog log) {
        this.photos = photos;
        this.log = log;
    }

    ImportResult importAll(List<Path> files) {
        Stopwatch stopwatch = new Stopwatch();
        SortedMap<Path, String> assetIds = new TreeMap<>();
        List<ImportResult.Failure> failures = new ArrayList<>();
        Progress progress = Progress.of("Importing", files.size());
        for (Path file : files) {
            log.skipToEnd();
            String[] results =
                    photos.nativeImportAssets(new String[] {file.toAbsolutePath().toString()});
            if (results != null && results[0] != null) {
                assetIds.put(file, results[0]);
            } else {
                failures.add(new ImportResult.Failure(file, reasonOf(file, results)));
            }
            progress.step(file.getFileName().toString());
        }
        progress.end();
        return new ImportResult(assetIds, failures, stopwatch.elapsed());
    }

    private String reasonOf(Path file, String[] results) {
        return results == null
                ? "its path has a character that cannot cross to the library"
                : log.reasonFor(file.getFileName().toString());
    }
}
