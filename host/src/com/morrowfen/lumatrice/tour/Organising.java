package com.morrowfen.lumatrice.tour;

import com.morrowfen.lumatrice.photos.Collection;
import com.morrowfen.lumatrice.photos.ImportResult;
import com.morrowfen.lumatrice.photos.PhotoLibrary;
import com.morrowfen.lumatrice.photos.PhotosException;
import java.nio.file.Path;
import java.util.List;
import java.util.Optional;

/** The tour's part with albums and folders. */
final class Organising {
    private final PhotoLibrary library;

    Organising(PhotoLibrary library) {
        this.library = library;
    }

    /**
     * Makes albums and folders of what was imported, copies one of them and prints all.
     *
     * @return the copy's identifier
     */
    Optional<String> organise(Path folder, List<ImportResult> results) {
        new AlbumMaker(library).makeAll(PictureFolder.of(folder, results));
        Optional<String> copyId = toCopy(library.collections()).flatMap(this::copy);
        System.out.println("Albums and folders:");
        new TreePrinter(library, System.out).print();
        return copyId;
    }

    /** The first folder, because it has the most to copy; without one the first album. */
    private static Optional<Collection> toCopy(List<Collection> topLevel) {
        return firstOf(topLevel, Collection.Kind.FOLDER)
                .or(() -> firstOf(topLevel, Collection.Kind.ALBUM));
    }

    private static Optional<Collection> firstOf(List<Collection> all, Collection.Kind kind) {
        return all.stream().filter(one -> one.kind() == kind).findFirst();
    }

    private Optional<String> copy(Collection original) {
        try {
            String copyId = library.duplicate(original.id());
            System.out.println(Printable.line("Copied " + original.title() + " to "
                    + library.titleOf(copyId).orElse("one that is gone")));
            return Optional.of(copyId);
        } catch (PhotosException problem) {
            System.out.println(Printable.line(
                    original.title() + " could not be copied: " + problem.getMessage()));
            return Optional.empty();
        }
    }
}
