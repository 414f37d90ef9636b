/**
 * The user's photo library for programs on the JVM: assets, albums and folders, thumbnails,
 * imports, exports and edits.
 *
 * <p>{@link com.morrowfen.lumatrice.photos} is where to begin.
 */
module com.morrowfen.lumatrice.photos {
    exports com.morrowfen.lumatrice.photos;
    exports com.morrowfen.lumatrice.service;
}
