import com.morrowfen.lumatrice.photos.Access;
import com.morrowfen.lumatrice.photos.Asset;
import com.morrowfen.lumatrice.photos.Collection;
import com.morrowfen.lumatrice.photos.Export;
import com.morrowfen.lumatrice.photos.ImportResult;
import com.morrowfen.lumatrice.photos.Page;
import com.morrowfen.lumatrice.photos.PhotoLibrary;
import com.morrowfen.lumatrice.photos.PhotosException;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.util.List;
import java.util.Optional;

/**
 * The ten things that the overview of the documentation shows, run one after the other: imports
 * the files that it is given, and works on them in a folder.
 */
public final class TenThings {
    private TenThings() {}

    public static void main(String[] args) throws Exception {
        Path folder = Path.of(args[0]);
        List<Path> files = List.of(args).subList(1, args.length).stream().map(Path::of).toList();

        // 1
        PhotoLibrary library = PhotoLibrary.open();
        if (library.authorize() == Access.NONE) {
            throw new IllegalStateException("The user does not want us to see any pictures.");
        }

        // 2
        for (ImportResult result : library.importFiles(files)) {
            result.problem().ifPresent(why -> System.err.println(result.file() + ": " + why));
        }

        // 3
        Page page = library.page(0, 100);
        for (Asset asset : page.assets()) {
            System.out.println(asset.filename() + ", " + asset.width() + " x " + asset.height());
        }

        // 4
        List<String> wide = library.assets()
                .filter(asset -> !asset.isVideo() && asset.width() > asset.height())
                .map(Asset::id)
                .limit(10)
                .toList();

        // 5
        String first = wide.get(0);
        library.thumbnail(first, 256, 256).ifPresent(picture ->
                System.out.println(picture.length() + " bytes of JPEG, " + picture.width() + " wide"));

        // 6
        String trip = library.createFolder("Summer");
        String album = library.createAlbum("Best of it", trip);
        library.addToAlbum(album, wide);
        for (Collection inside : library.collections(trip)) {
            System.out.println(inside.title() + ": " + inside.count());
        }

        // 7
        library.setFavorite(wide, true);

        // 8
        Export export = library.export(first, folder.resolve("exported.jpg"));
        Path exported = export.future().join(); // meanwhile, export.cancel() would end it
        System.out.println("exported to " + exported);

        // 9
        library.edit(first, (original, rendered) -> render(original, rendered));

        // 10
        try {
            library.deleteAssets(List.of(first));
        } catch (PhotosException problem) {
            System.err.println(problem.getMessage()); // code -2: the user refused
        }

        Optional<String> title = library.titleOf(album);
        System.out.println(title.orElseThrow() + " holds "
                + library.albumAssets(album).count() + ", the library " + library.assetCount());
    }

    /** A host would do something to the picture here. */
    private static void render(Path original, Path rendered) throws IOException {
        Files.copy(original, rendered, StandardCopyOption.REPLACE_EXISTING);
    }
}
