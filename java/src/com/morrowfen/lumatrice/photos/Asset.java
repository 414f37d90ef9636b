package com.morrowfen.lumatrice.photos;

import java.time.Instant;
import java.util.Optional;

/**
 * A photo or a video, as it was when it was listed.
 *
 * @param id the local identifier, by which every method names it
 * @param filename the file name to show
 * @param isVideo whether it is a video
 * @param width in pixels, as displayed
 * @param height in pixels, as displayed
 * @param createdMs milliseconds since 1970-01-01T00:00:00Z; 0 if unknown
 * @param isFavorite whether it is marked as a favourite
 * @param isHidden whether it is hidden; most listings leave hidden assets out
 */
public record Asset(
        String id,
        String filename,
        boolean isVideo,
        int width,
        int height,
        long createdMs,
        boolean isFavorite,
        boolean isHidden) {
    /**
     * When it was taken.
     *
     * @return the time, empty if unknown
     */
    public Optional<Instant> created() {
        return createdMs == 0 ? Optional.empty() : Optional.of(Instant.ofEpochMilli(createdMs));
    }
}
