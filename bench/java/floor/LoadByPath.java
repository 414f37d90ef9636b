import com.morrowfen.lumatrice.service.PhotosService;
import java.io.IOException;
import java.io.InputStream;
import java.nio.channels.Channels;
import java.nio.channels.FileChannel;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;

/**
 * The floor of a first page: the library loaded by its path, and the native method. With the
 * folder of the native parts in the jar as a second word, those are copied to the path first, and
 * synced, as a host would have to do that brings them along. Prints nanoseconds.
 */
public final class LoadByPath {
    private LoadByPath() {}

    public static void main(String[] words) throws IOException {
        long start = System.nanoTime();
        Path library = Path.of(words[0]);
        if (words.length > 1) {
            copy(words[1] + "/" + library.getFileName(), library);
            copy(words[1] + "/photos-kit-imaging", library.resolveSibling("photos-kit-imaging"));
        }
        System.load(words[0]);
        int length = new PhotosService().nativeListAssets(100, 0).length();
        long time = System.nanoTime() - start;
        if (length < 100) {
            throw new IllegalStateException("no page");
        }
        System.out.println(time);
    }

    private static void copy(String part, Path file) throws IOException {
        try (InputStream in = LoadByPath.class.getResourceAsStream(part);
                FileChannel out = FileChannel.open(
                        file, StandardOpenOption.CREATE_NEW, StandardOpenOption.WRITE)) {
            in.transferTo(Channels.newOutputStream(out));
            out.force(true);
        }
    }
}
