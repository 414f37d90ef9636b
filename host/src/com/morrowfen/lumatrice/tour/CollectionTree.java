package com.morrowfen.lumatrice.tour;

import com.google.gson.Gson;
import com.morrowfen.lumatrice.service.PhotosService;
import java.util.Arrays;
import java.util.List;

/** Albums and folders as they lie in each other, read one level at a time. */
final class CollectionTree {
    private final PhotosService photos;
    private final Gson gson = new Gson();

    CollectionTree(PhotosService photos) {
        this.photos = photos;
    }

    /** A collection and, if it is a folder, what it holds. */
    record Node(Collection collection, List<Node> children) {}

    /** The top level with all below it; the smart albums come last. */
    List<Node> read() {
        return below(null);
    }

    private List<Node> below(String folderId) {
        Collection[] level =
                gson.fromJson(photos.nativeListAlbums(folderId), Collection[].class);
        return Arrays.stream(level)
                .map(one -> new Node(one, one.isFolder() ? below(one.id()) : List.of()))
                .toList();
    }
}
