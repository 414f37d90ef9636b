package com.morrowfen.lumatrice.photos;

import com.morrowfen.lumatrice.service.PhotosService;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.util.concurrent.CancellationException;
import java.util.concurrent.CompletableFuture;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.Executor;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.atomic.AtomicBoolean;
import java.util.concurrent.atomic.AtomicInteger;

/**
 * An export under way. The file is written beside its destination, under a name that begins with
 * {@code .photos-kit-} and ends with {@code .part}, and moved there in one step when it is
 * complete: until then, and for good if the export fails or is cancelled, what stood at the
 * destination stays. A process that dies meanwhile leaves the part.
 *
 * <p>The request ids that it uses are negative; whoever calls
 * {@link PhotosService#nativeExportToFile} beside it should use others.
 */
public final class Export {
    private static final AtomicInteger NEXT_REQUEST = new AtomicInteger(Integer.MIN_VALUE);
    private static final long LONGEST_PAUSE_MS = 64;

    private final PhotosService photos;
    private final String assetId;
    private final Path destination;
    private final Path part;
    private final String partPath;
    private final int request = NEXT_REQUEST.getAndUpdate(last -> last == -1 ? Integer.MIN_VALUE : last + 1);
    private final CompletableFuture<Path> future = new CompletableFuture<>();
    private final AtomicBoolean cancelled = new AtomicBoolean();
    private final CountDownLatch ended = new CountDownLatch(1);

    private Export(PhotosService photos, String assetId, Path destination) {
        this.photos = photos;
        this.assetId = assetId;
        this.destination = destination;
        part = destination.toAbsolutePath().resolveSibling(".photos-kit-"
                + ProcessHandle.current().pid() + "-" + Integer.toUnsignedString(request) + ".part");
        partPath = Arguments.newFile("destination", part);
    }

    static Export start(PhotosService photos, String assetId, Path destination, Executor executor) {
        Arguments.filledText("assetId", assetId);
        if (Files.isDirectory(destination)) {
            throw new IllegalArgumentException("destination is a folder: " + destination);
        }
        Export export = new Export(photos, assetId, destination);
        export.future.whenComplete((done, problem) -> {
            if (export.future.isCancelled()) {
                export.cancel();
            }
        });
        executor.execute(export::run);
        return export;
    }

    /**
     * What becomes of the export: the destination once the file is complete there. It fails with a
     * {@link PhotosException} if the file could not be exported, and is cancelled if the export
     * was. To cancel it is to cancel the export, and does not wait for the end of it.
     *
     * @return the same object every time
     */
    public CompletableFuture<Path> future() {
        return future;
    }

    /**
     * Cancels the export, whether or not its transfer has begun, and returns at once. An export
     * that is complete before this reaches it stays complete.
     */
    public void cancel() {
        if (cancelled.getAndSet(true) || ended.getCount() == 0) {
            return;
        }
        // A platform thread: exports may occupy all that virtual threads run on.
        Thread canceller = new Thread(this::cancelUntilEnded, "photos-kit-cancel");
        canceller.setDaemon(true);
        canceller.start();
    }

    /**
     * Waits until nothing is under way any more, as after a cancellation: the part is gone, or
     * the file stands at its destination. Does not throw what {@link #future()} fails with.
     *
     * @throws InterruptedException if the waiting thread is interrupted
     */
    public void awaitEnd() throws InterruptedException {
        ended.await();
    }

    /** A cancellation is lost while the transfer has not begun, so one may not be enough. */
    private void cancelUntilEnded() {
        try {
            long pause = 1;
            do {
                photos.nativeCancelExport(request);
                pause = Math.min(2 * pause, LONGEST_PAUSE_MS);
            } while (!ended.await(pause, TimeUnit.MILLISECONDS));
        } catch (InterruptedException nobodyElseKnowsThisThread) {
            Thread.currentThread().interrupt();
        }
    }

    private void run() {
        Throwable problem = null;
        try {
            transfer();
        } catch (Throwable thrown) {
            problem = thrown;
        }
        ended.countDown();
        if (problem == null) {
            future.complete(destination);
        } else {
            future.completeExceptionally(problem);
        }
    }

    private void transfer() throws IOException {
        boolean complete = false;
        try {
            int result = cancelled.get() ? -4 : photos.nativeExportToFile(assetId, partPath, request);
            if (result == -4) {
                throw new CancellationException("the export was cancelled");
            }
            ResultCodes.successful("nativeExportToFile", result);
            Files.move(part, destination, StandardCopyOption.ATOMIC_MOVE);
            complete = true;
        } finally {
            if (!complete) {
                Files.deleteIfExists(part);
            }
        }
    }
}
