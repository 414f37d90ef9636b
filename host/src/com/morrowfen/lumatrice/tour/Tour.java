package com.morrowfen.lumatrice.tour;

import com.morrowfen.lumatrice.photos.Asset;
import com.morrowfen.lumatrice.photos.ImportResult;
import com.morrowfen.lumatrice.photos.PhotoLibrary;
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
 * <p>The photo library and the diagnostic log are those of {@code HOME}; the tool {@code photos-kit}
 * is found on {@code PATH}. Ends with 1 when nothing could be imported, with 2 when it is called
 * wrongly.
 */
public final class Tour {
    private Tour() {}

    public static void main(String[] arguments) throws IOException, InterruptedException {
        if (arguments.length != 2) {
            System.err.println("Usage: Tour FOLDER OUTPUT_FOLDER");
            System.exit(2);
        }
        boolean imported = run(Path.of(arguments[0]), Path.of(arguments[1]));
        System.exit(imported ? 0 : 1);
    }

    private static boolean run(Path folder, Path output) throws IOException, InterruptedException {
        PhotoLibrary library = PhotoLibrary.open();
        System.out.println("Access to the photo library: " + describeAccess(library));

        List<Path> files = FolderFiles.below(folder);
        System.out.printf("Importing %,d files from %s%n", files.size(), folder);
        Stopwatch importing = new Stopwatch();
        List<ImportResult> results = new Importer(library, ImportLog.ofHome()).importAll(files);
        Duration importTime = importing.elapsed();
        for (ImportResult result : results) {
            result.problem().ifPresent(reason -> System.out.println("  not imported: "
                    + Printable.line(folder.relativize(result.file()) + ": " + reason)));
        }

        Optional<String> copyId = new Organising(library).organise(folder, results);
        Optional<Section> edited =
                new Changing(library, output).change(library.assets().toList());
        List<Asset> assets = library.assets().toList();
        System.out.printf("The library holds %,d assets; %,d listed.%n", library.assetCount(),
                assets.size());

        Stopwatch rendering = new Stopwatch();
        List<Tile> tiles =
                ThumbnailRenderer.renderAll(library, assets, output.resolve("thumbnails"));
        Duration renderTime = rendering.elapsed();

        List<Section> sections = new ArrayList<>(Sections.of(library, tiles, copyId));
        edited.ifPresent(section -> sections.add(0, section));
        writeContactSheets(folder, tiles, sections, output);
        System.out.println(Figures.closingLine(results, importTime, tiles, renderTime));
        return results.stream().anyMatch(ImportResult::isImported);
    }

    private static void writeContactSheets(
            Path folder, List<Tile> tiles, List<Section> sections, Path output) throws IOException {
        Path name = folder.toRealPath().getFileName();
        String title = name == null ? folder.toString() : name.toString();
        System.out.println(
                "Contact sheet: " + ContactSheetPage.write(title, tiles, sections, output));
        System.out.println(
                "               " + ContactSheetPicture.write(title, tiles, sections, output));
    }

    private static String describeAccess(PhotoLibrary library) {
        return switch (library.authorize()) {
            case FULL -> "full";
            case LIMITED -> "limited to chosen assets";
            case NONE -> "none";
        };
    }
}
