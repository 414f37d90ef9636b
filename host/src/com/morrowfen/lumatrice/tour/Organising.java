package com.morrowfen.lumatrice.tour;

import com.morrowfen.lumatrice.service.PhotosService;
import java.nio.file.Path;
import java.util.List;
import java.util.Optional;

/** The tour's part with albums and folders. */
final class Organising {
    private final PhotosService photos;

    Organising(PhotosService photos) {
        this.photos = photos;
    }

    /**
     * Makes albums and folders of what was imported, copies one of them and prints all.
     *
     * @return the tree as it was before the copy
     */
    List<CollectionTree.Node> organise(Path folder, ImportResult result) {
        new AlbumMaker(photos).makeAll(PictureFolder.of(folder, result.assetIds()));
        CollectionTree tree = new CollectionTree(photos);
        List<CollectionTree.Node> made = tree.read();
        toCopy(made).ifPresent(this::copy);
        System.out.println("Albums and folders:");
        new TreePrinter(System.out).print(tree.read());
        return made;
    }

    /** The first folder, because it has the most to copy; without one the first album. */
    private static Optional<Collection> toCopy(List<CollectionTree.Node> topLevel) {
        List<Collection> candidates =
                topLevel.stream().map(CollectionTree.Node::collection).toList();
        return candidates.stream().filter(Collection::isFolder).findFirst()
                .or(() -> candidates.stream().filter(Collection::isUserAlbum).findFirst());
    }

    private void copy(Collection original) {
        String copyId = photos.nativeDuplicateCollection(original.id());
        System.out.println(Printable.line(copyId == null
                ? original.title() + " could not be copied"
                : "Copied " + original.title() + " to " + photos.nativeCollectionTitle(copyId)));
    }
}
