package com.morrowfen.lumatrice.tour;

import java.time.Duration;

/** Measures the time since it was made. */
final class Stopwatch {
    private final long start = System.nanoTime();

    Duration elapsed() {
        return Duration.ofNanos(System.nanoTime() - start);
    }
}
