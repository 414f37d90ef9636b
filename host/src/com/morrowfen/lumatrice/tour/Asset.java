package com.morrowfen.lumatrice.tour;

/**
 * One asset of a listing. The fields are named as in the library's JSON.
 *
 * @param width in pixels, as displayed
 * @param height in pixels, as displayed
 * @param createdMs milliseconds since 1970-01-01T00:00:00Z, 0 if unknown
 */
record Asset(
        String id,
        String filename,
        boolean isVideo,
        int width,
        int height,
        long createdMs,
        boolean isFavorite) {}
