package com.morrowfen.lumatrice.tour;

import com.morrowfen.lumatrice.service.PhotosService;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;

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
        List<ImportResult.Failure> failures = new ArrayList<>();
        Progress progress = Progress.of("Importing", files.size());
        for (Path file : files) {
            String reason = importFile(file);
            if (reason != null) {
                failures.add(new ImportResult.Failure(file, reason));
            }
            progress.step(file.getFileName().toString());
        }
        progress.end();
        return new ImportResult(files.size() - failures.size(), failures, stopwatch.elapsed());
    }

    /** Null when the file is in the library now, else why not. */
    private String importFile(Path file) {
        log.skipToEnd();
        String[] identifiers =
                photos.nativeImportAssets(new String[] {file.toAbsolutePath().toString()});
        if (identifiers == null) {
            return "its path has a character that cannot cross to the library";
        }
        return identifiers[0] == null ? log.reasonFor(file.getFileName().toString()) : null;
    }
}
