import com.morrowfen.lumatrice.service.PhotosLoadException;
import com.morrowfen.lumatrice.service.PhotosService;
import java.io.File;
import java.lang.reflect.InvocationTargetException;
import java.net.URL;
import java.net.URLClassLoader;
import java.nio.file.Path;

/**
 * Loads the library and prints where from; ends with 3 and the reason if it is refused. Then
 * "stay" waits for the end of the input, and "again FILE" loads that one as well, through a class
 * loader of its own.
 */
public final class Load {
    private Load() {}

    public static void main(String[] words) throws Exception {
        try {
            new PhotosService();
            new PhotosService(Path.of(System.getProperty("com.morrowfen.lumatrice.photos.loaded")));
            System.out.println("loaded " + System.getProperty("com.morrowfen.lumatrice.photos.loaded"));
            System.out.println(new PhotosService().nativeAssetCount() + " assets");
            for (Thread each : Thread.getAllStackTraces().keySet()) {
                if (each.getName().equals("photos-kit-cache")) { // have it done now
                    each.interrupt();
                    each.join();
                }
            }
            switch (words.length == 0 ? "" : words[0]) {
                case "stay" -> System.in.read();
                case "again" -> again(Path.of(words[1]));
                case "here" -> new PhotosService(Path.of(words[1]));
                default -> { }
            }
        } catch (PhotosLoadException refused) {
            System.out.println("refused: " + refused.getMessage());
            System.exit(3);
        }
    }

    private static void again(Path file) throws Exception {
        String[] places = System.getProperty("java.class.path").split(File.pathSeparator);
        URL[] urls = new URL[places.length];
        for (int i = 0; i < urls.length; ++i) {
            urls[i] = new File(places[i]).toURI().toURL();
        }
        Class<?> other = new URLClassLoader(urls, null).loadClass(PhotosService.class.getName());
        try {
            other.getConstructor(Path.class).newInstance(file);
        } catch (InvocationTargetException problem) {
            System.out.println("refused: " + problem.getCause());
            System.exit(4);
        }
    }
}
