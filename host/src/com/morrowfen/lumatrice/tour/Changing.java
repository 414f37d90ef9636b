package com.morrowfen.lumatrice.tour;

import com.morrowfen.lumatrice.photos.Asset;
import com.morrowfen.lumatrice.photos.PhotoLibrary;
import com.morrowfen.lumatrice.photos.PhotosException;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.Locale;
import java.util.Optional;
import java.util.concurrent.CompletionException;

/** The tour's part with single assets: one is edited, handed out, deleted and brought back. */
final class Changing {
    private final PhotoLibrary library;
    private final Path output;

    Changing(PhotoLibrary library, Path output) {
        this.library = library;
        this.output = output;
    }

    /**
     * Does all of it with the newest picture that can be edited here.
     *
     * @return the picture before and after; nothing when there is none to edit
     */
    Optional<Section> change(List<Asset> assets) throws IOException, InterruptedException {
        Optional<Asset> chosen = assets.stream().filter(Changing::canBeEdited).findFirst();
        if (chosen.isEmpty()) {
            System.out.println("No photo here that a small host can edit (JPEG or PNG).");
            return Optional.empty();
        }
        Asset asset = chosen.get();
        Tile before = shown(asset, "before");
        edit(asset);
        Tile after = shown(asset, "after");
        export(asset);
        markDeleteAndRestore(asset);
        return Optional.of(new Section("Edited: before and after", List.of(before, after)));
    }

    private static boolean canBeEdited(Asset asset) {
        String name = asset.filename().toLowerCase(Locale.ROOT);
        return name.endsWith(".jpg") || name.endsWith(".jpeg") || name.endsWith(".png");
    }

    private Tile shown(Asset asset, String when) throws IOException {
        Path folder = Files.createDirectories(output.resolve("edited"));
        return Tile.render(library, asset, when + ": " + asset.filename(),
                folder.resolve(when + ".jpg"));
    }

    private void edit(Asset asset) {
        try {
            library.edit(asset.id(), (original, rendered) ->
                    Sepia.render(original, rendered, asset.width(), asset.height()));
            System.out.println(Printable.line(
                    "Edited " + asset.filename() + "; the original stays beside the edit"));
        } catch (IOException | PhotosException problem) {
            System.out.println(Printable.line("Not edited: " + problem.getMessage()));
        }
    }

    private void export(Asset asset) throws IOException {
        Path destination = output.resolve("exported").resolve("edited-picture.jpg");
        try {
            Path exported = library.export(asset.id(), destination).future().join();
            System.out.printf("Exported it to %s (%,d bytes)%n", output.relativize(exported),
                    Files.size(exported));
        } catch (CompletionException problem) {
            System.out.println("The export failed: " + problem.getCause().getMessage());
        }
    }

    private void markDeleteAndRestore(Asset asset) throws IOException, InterruptedException {
        List<String> ids = List.of(asset.id());
        try {
            library.setFavorite(ids, true);
            long before = library.assetCount();
            int deleted = library.deleteAssets(ids);
            System.out.printf("Deleted %d asset (%,d of %,d left), ", deleted,
                    library.assetCount(), before);
        } catch (PhotosException problem) {
            System.out.println("Not deleted: " + problem.getMessage());
            return;
        }
        System.out.println(RestoringTool.restore(asset.id())
                ? String.format("restored it from the trash (%,d)", library.assetCount())
                : "and could not restore it");
    }
}
