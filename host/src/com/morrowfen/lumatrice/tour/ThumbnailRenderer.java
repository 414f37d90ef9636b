package com.morrowfen.lumatrice.tour;

import com.morrowfen.lumatrice.service.PhotosService;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.ExecutionException;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;

/** Renders thumbnails to files, several at a time. */
final class ThumbnailRenderer {
    private final PhotosService photos;
    private final int threads;

    ThumbnailRenderer(PhotosService photos, int threads) {
        this.photos = photos;
        this.threads = threads;
    }

    /** One for each asset, in their order. */
    List<Thumbnail> renderAll(List<Asset> assets, Path folder)
            throws IOException, InterruptedException {
        Files.createDirectories(folder);
        Progress progress = Progress.of("Rendering", assets.size());
        ExecutorService executor = Executors.newFixedThreadPool(threads);
        try {
            List<Future<Thumbnail>> pending = new ArrayList<>();
            for (int i = 0; i < assets.size(); ++i) {
                Asset asset = assets.get(i);
                Path file = folder.resolve(String.format("%05d.jpg", i + 1));
                pending.add(executor.submit(() -> render(asset, file, progress)));
            }
            List<Thumbnail> thumbnails = new ArrayList<>();
            for (Future<Thumbnail> thumbnail : pending) {
                thumbnails.add(thumbnail.get());
            }
            return thumbnails;
        } catch (ExecutionException failed) {
            throw new IOException("A thumbnail could not be written", failed.getCause());
        } finally {
            executor.shutdownNow();
            progress.end();
        }
    }

    private Thumbnail render(Asset asset, Path file, Progress progress) throws IOException {
        byte[] jpeg = photos.nativeRequestThumbnail(asset.id(), Cell.WIDTH, Cell.HEIGHT);
        progress.step(asset.filename());
        if (jpeg == null) {
            return new Thumbnail(asset, null);
        }
        Files.write(file, jpeg);
        return new Thumbnail(asset, file);
    }
}
