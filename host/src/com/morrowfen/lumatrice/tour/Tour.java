package com.morrowfen.lumatrice.tour;

import com.morrowfen.lumatrice.service.PhotosService;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.time.Duration;
import java.util.ArrayList;
import java.util.List;
import java.util.Optional;

/**
 * A small host: imports the files of a folder into the photo library, makes albums of its
 * sub-folders, edits one picture, hands it out, deletes it and brings it back, pages through all of
 * it, renders thumbnails on several threads and draws a contact sheet, album by album, as a web page
 * and as one picture.
 *
 * <p>The photo library and the diagnostic log are those of {@code HOME}. Ends with 1 when nothing
 * could be imported, with 2 when it is called wrongly.
 */
public final class Tour {
    private static final int THUMBNAIL_THREADS = 4;

    private Tour() {}

    public static void main(String[] arguments) throws IOException, InterruptedException {
        if (arguments.length != 3) {
            System.err.println("Usage: Tour LIBRARY FOLDER OUTPUT_FOLDER");
            System.exit(2);
        }
        boolean imported =
                run(Path.of(arguments[0]), Path.of(arguments[1]), Path.of(arguments[2]));
        System.exit(imported ? 0 : 1);
    }

    private static boolean run(Path library, Path folder, Path output)
            throws IOException, InterruptedException {
        PhotosService photos = new PhotosService(library);
        int access = photos.nativeAuthorize();
        System.out.println("Access to the photo library: " + describeAccess(access));

        List<Path> files = FolderFiles.below(folder);
        System.out.printf("Importing %,d files from %s%n", files.size(), folder);
        ImportResult result = new Importer(photos, ImportLog.ofHome()).importAll(files);
        result.failures().forEach(failure ->
                System.out.println("  not imported: " + Printable.line(
                        folder.relativize(failure.file()) + ": " + failure.reason())));

        List<CollectionTree.Node> tree = new Organising(photos).organise(folder, result);

        Listing listing = new Listing(photos);
        Optional<Section> edited =
                new Changing(photos, new RestoringTool(library), output).change(listing.all());
        int count = photos.nativeAssetCount();
        List<Asset> assets = listing.all();
        System.out.printf("The library holds %,d assets; %,d listed.%n", count, assets.size());

        Files.createDirectories(output);
        Stopwatch rendering = new Stopwatch();
        List<Thumbnail> thumbnails =
                new ThumbnailRenderer(photos, THUMBNAIL_THREADS)
                        .renderAll(assets, output.resolve("thumbnails"));
        Duration renderTime = rendering.elapsed();

        String title = titleOf(folder);
        List<Section> sections = new ArrayList<>(Sections.of(tree, listing, thumbnails));
        edited.ifPresent(section -> sections.add(0, section));
        Path page = ContactSheetPage.write(title, thumbnails, sections, output);
        Path picture = ContactSheetPicture.write(title, thumbnails, sections, output);
        System.out.println("Contact sheet: " + page);
        System.out.println("               " + picture);
        System.out.println(
                Figures.closingLine(files.size(), result, thumbnails, renderTime));
        return result.imported() > 0;
    }

    private static String titleOf(Path folder) throws IOException {
        Path name = folder.toRealPath().getFileName();
        return name == null ? folder.toString() : name.toString();
    }

    private static String describeAccess(int access) {
        return switch (access) {
            case 1 -> "full";
            case 2 -> "limited to chosen assets";
            default -> "none";
        };
    }
}
