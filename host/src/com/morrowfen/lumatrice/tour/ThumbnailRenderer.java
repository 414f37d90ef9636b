package com.morrowfen.lumatrice.tour;

import com.morrowfen.lumatrice.photos.Asset;
import com.morrowfen.lumatrice.photos.PhotoLibrary;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.Callable;
import java.util.concurrent.ExecutionException;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;

/** Renders thumbnails to files, several at a time. */
final class ThumbnailRenderer {
    private static final int THREADS = 4;

    private ThumbnailRenderer() {}

    /** One for each asset, in their order. */
    static List<Tile> renderAll(PhotoLibrary library, List<Asset> assets, Path folder)
            throws IOException, InterruptedException {
        Files.createDirectories(folder);
        Progress progress = Progress.of("Rendering", assets.size());
        List<Callable<Tile>> work = new ArrayList<>();
        for (Asset asset : assets) {
            Path file = folder.resolve(String.format("%05d.jpg", work.size() + 1));
            work.add(() -> {
                Tile tile = Tile.render(library, asset, asset.filename(), file);
                progress.step(asset.filename());
                return tile;
            });
        }
        ExecutorService executor = Executors.newFixedThreadPool(THREADS);
        try {
            List<Tile> tiles = new ArrayList<>();
            for (Future<Tile> done : executor.invokeAll(work)) {
                tiles.add(done.get());
            }
            return tiles;
        } catch (ExecutionException failed) {
            throw new IOException("A thumbnail could not be written", failed.getCause());
        } finally {
            executor.shutdownNow();
            progress.end();
        }
    }
}
