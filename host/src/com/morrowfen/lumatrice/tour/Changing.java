package com.morrowfen.lumatrice.tour;

import com.morrowfen.lumatrice.service.PhotosService;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.Locale;
import java.util.Optional;

/** The tour's part with single assets: one is edited, handed out, deleted and brought back. */
final class Changing {
    private final PhotosService photos;
    private final RestoringTool tool;
    private final Path output;

    Changing(PhotosService photos, RestoringTool tool, Path output) {
        this.photos = photos;
        this.tool = tool;
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
        Path folder = Files.createDirectories(output.resolve("edited"));
        Thumbnail before = shown(asset, "before", folder);
        edit(asset, folder);
        Thumbnail after = shown(asset, "after", folder);
        export(asset);
        photos.nativeSetFavorite(new String[] {asset.id()}, true);
        deleteAndRestore(asset);
        return Optional.of(new Section("Edited: before and after", List.of(before, after)));
    }

    private static boolean canBeEdited(Asset asset) {
        String name = asset.filename().toLowerCase(Locale.ROOT);
        return name.endsWith(".jpg") || name.endsWith(".jpeg") || name.endsWith(".png");
    }

    private Thumbnail shown(Asset asset, String when, Path folder) throws IOException {
        byte[] jpeg = photos.nativeRequestThumbnail(asset.id(), Cell.WIDTH, Cell.HEIGHT);
        Asset labelled = new Asset(asset.id(), when + ": " + asset.filename(), false,
                asset.width(), asset.height(), asset.createdMs(), asset.isFavorite());
        return new Thumbnail(
                labelled, jpeg == null ? null : Files.write(folder.resolve(when + ".jpg"), jpeg));
    }

    private void edit(Asset asset, Path folder) throws IOException {
        Path original = folder.resolve("original");
        Path rendered = folder.resolve("rendered.jpg");
        int handedOut = photos.nativeContentEditingImage(asset.id(), original.toString());
        if (handedOut != 0) {
            System.out.println("The picture was not handed out for editing: " + handedOut);
            return;
        }
        if (!Sepia.render(original, rendered, asset.width(), asset.height())) {
            System.out.println("The picture lies on its side: a small host cannot edit it");
            return;
        }
        int applied = photos.nativeApplyEdit(asset.id(), rendered.toString());
        System.out.println(Printable.line(applied == 0
                ? "Edited " + asset.filename() + "; the original stays beside the edit"
                : "The edit was refused: " + applied));
    }

    private void export(Asset asset) throws IOException {
        Path destination = output.resolve("exported").resolve("edited-picture.jpg");
        int result = photos.nativeExportToFile(asset.id(), destination.toString(), 1);
        System.out.println(result == 0
                ? String.format("Exported it to %s (%,d bytes)",
                        output.relativize(destination), Files.size(destination))
                : "The export failed: " + result);
    }

    private void deleteAndRestore(Asset asset) throws IOException, InterruptedException {
        int before = photos.nativeAssetCount();
        int deleted = photos.nativeDeleteAssets(new String[] {asset.id()});
        int without = photos.nativeAssetCount();
        boolean restored = tool.restore(asset.id());
        System.out.printf("Deleted %d asset (%,d of %,d left), %s%n", deleted, without, before,
                restored ? String.format("restored it from the trash (%,d)",
                        photos.nativeAssetCount())
                        : "and could not restore it");
    }
}
