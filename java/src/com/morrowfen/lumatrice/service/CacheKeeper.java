package com.morrowfen.lumatrice.service;

import java.io.IOException;
import java.nio.file.Path;

/**
 * What a start need not wait for: the parts in use are held against being swept, for processes
 * that live long, and what nobody uses any more goes. What fails is tried again at the next start.
 */
final class CacheKeeper extends Thread {
    /** Until the host, too, has started. */
    private static final long PAUSE_MS = 10_000;

    private final Path used;

    CacheKeeper(Path used) {
        super(null, null, "photos-kit-cache", 0, false);
        this.used = used;
        setDaemon(true);
    }

    @Override
    public void run() {
        try {
            Thread.sleep(PAUSE_MS);
        } catch (InterruptedException noNeedToWait) {
            // Whoever knows of this thread can have it done at once.
        }
        // The locks of this process are one, whichever class loader asks for them.
        synchronized (NativeLoader.processWideLock()) {
            keep();
        }
    }

    private void keep() {
        try (CacheFolder cache = CacheFolder.open()) {
            cache.hold(used);
            cache.sweep(used);
        } catch (IOException | RuntimeException anotherTime) {
            // The library is loaded; nobody would know what to do about this.
        }
    }
}
