package com.morrowfen.lumatrice.hostile;

import com.morrowfen.lumatrice.service.PhotosService;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.Map;
import java.util.TreeMap;
import java.util.stream.Stream;

/**
 * A host that is fed pictures made to break decoders: imports each file, asks for its thumbnail and
 * for its full size, uses it as the rendered picture of an edit, exports it, and prints what came of
 * them, folder by folder. Now and then it looks whether a good picture is still served.
 *
 * <p>Called with the library, the good picture and the folder whose sub-folders are the corpora. Ends
 * with 1 when a call took longer than a minute, a file came back other than it was, or the good
 * picture was not served. That this process ends at all is the other half of the result.
 */
public final class HostilePictures {
    private static final long MOST_SECONDS = 60;

    private final PhotosService photos;
    private final Path scratch;
    private final String good;
    private int faults;

    private static final class Row {
        int files;
        int imported;
        int thumbnails;
        int fullSizes;
        int edits;
        double slowest;
    }

    private HostilePictures(PhotosService photos, Path scratch, Path goodPicture) {
        this.photos = photos;
        this.scratch = scratch;
        this.good = importOne(goodPicture);
    }

    public static void main(String[] arguments) throws IOException {
        PhotosService photos = new PhotosService(Path.of(arguments[0]).toAbsolutePath());
        if (photos.nativeAuthorize() == 0) {
            throw new IllegalStateException("no photo library");
        }
        HostilePictures host = new HostilePictures(
                photos, Files.createTempDirectory("hostile"), Path.of(arguments[1]));
        Map<String, Row> table = new TreeMap<>();
        for (Path folder : children(Path.of(arguments[2]))) {
            table.put(folder.getFileName().toString(), host.feed(folder));
        }
        print(table);
        System.exit(host.faults == 0 ? 0 : 1);
    }

    private static List<Path> children(Path folder) throws IOException {
        try (Stream<Path> all = Files.list(folder)) {
            return all.filter(path -> !path.getFileName().toString().startsWith("."))
                    .filter(Files::isDirectory).sorted().toList();
        }
    }

    private Row feed(Path folder) throws IOException {
        Row row = new Row();
        List<Path> files;
        try (Stream<Path> all = Files.walk(folder)) {
            files = all.filter(Files::isRegularFile).sorted().toList();
        }
        for (Path file : files) {
            feed(file, row);
            if (++row.files % 50 == 0 || row.files == files.size()) {
                lookAtTheGoodPicture(file);
            }
        }
        return row;
    }

    private void feed(Path file, Row row) throws IOException {
        String asset = timed(row, file, () -> importOne(file));
        if (asset != null) {
            row.imported++;
            byte[] thumbnail =
                    timed(row, file, () -> photos.nativeRequestThumbnail(asset, 256, 256));
            byte[] fullSize = timed(row, file, () -> photos.nativeRequestThumbnail(asset, -1, -1));
            row.thumbnails += thumbnail == null ? 0 : 1;
            row.fullSizes += fullSize == null ? 0 : 1;
            if ((thumbnail == null) != (fullSize == null)) {
                System.out.println((thumbnail == null ? "Only at full size: "
                        : "Only as a thumbnail: ") + file);
            }
            comesBackAsItWas(file, asset);
        }
        boolean edited =
                timed(row, file, () -> photos.nativeApplyEdit(good, file.toString())) == 0;
        row.edits += edited ? 1 : 0;
        if (asset != null && photos.nativeDeleteAssets(new String[] {asset}) != 1) {
            fault("not deleted", file);
        }
    }

    private String importOne(Path file) {
        String[] identifiers = photos.nativeImportAssets(new String[] {file.toString()});
        return identifiers == null ? null : identifiers[0];
    }

    private void comesBackAsItWas(Path file, String asset) throws IOException {
        Path copy = scratch.resolve("copy");
        if (photos.nativeExportToFile(asset, copy.toString(), 1) != 0
                || Files.mismatch(file, copy) != -1) {
            fault("not exported as it was imported", file);
        }
    }

    private void lookAtTheGoodPicture(Path after) {
        if (photos.nativeRequestThumbnail(good, 64, 64) == null) {
            fault("the good picture is not served after", after);
        }
    }

    private <T> T timed(Row row, Path file, java.util.function.Supplier<T> call) {
        long start = System.nanoTime();
        T result = call.get();
        double seconds = (System.nanoTime() - start) / 1e9;
        row.slowest = Math.max(row.slowest, seconds);
        if (seconds > MOST_SECONDS) {
            fault("took " + Math.round(seconds) + " s", file);
        }
        return result;
    }

    private void fault(String what, Path file) {
        faults++;
        System.out.println("FAULT: " + what + ": " + file);
    }

    private static void print(Map<String, Row> table) {
        System.out.println("| corpus | files | imported | with a thumbnail | at full size "
                + "| taken as an edit | slowest call |");
        System.out.println("|---|---|---|---|---|---|---|");
        table.forEach((name, row) -> System.out.printf("| %s | %d | %d | %d | %d | %d | %.1f s |%n",
                name, row.files, row.imported, row.thumbnails, row.fullSizes, row.edits,
                row.slowest));
    }
}
