package com.morrowfen.lumatrice.tour;

import com.morrowfen.lumatrice.photos.ImportResult;
import com.morrowfen.lumatrice.photos.PhotoLibrary;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Optional;

/** Imports files one call each, so that progress shows and each failure has its reason. */
final class Importer {
    private final PhotoLibrary library;
    private final ImportLog log;

    Importer(PhotoLibrary library, ImportLog log) {
        this.library = library;
        this.log = log;
    }

    /** One result a file, in their order. */
    List<ImportResult> importAll(List<Path> files) {
        List<ImportResult> results = new ArrayList<>();
        Progress progress = Progress.of("Importing", files.size());
        for (Path file : files) {
            results.add(importOne(file));
            progress.step(file.getFileName().toString());
        }
        progress.end();
        return results;
    }

    private ImportResult importOne(Path file) {
        log.skipToEnd();
        ImportResult result = library.importFile(file);
        Optional<String> reason = result.isImported() ? Optional.empty()
                : log.reasonFor(file.getFileName().toString()).or(result::problem);
        return new ImportResult(file, result.assetId(), reason);
    }
}
