import com.morrowfen.lumatrice.photos.PhotoLibrary;
import com.morrowfen.lumatrice.service.PhotosService;
import java.util.Arrays;
import java.util.function.IntSupplier;

/**
 * A page of 100 from the middle of the library, through the layer with types and as the native
 * method's bare text, in turns and warm. Prints the medians of both, in nanoseconds.
 */
public final class PageCost {
    private PageCost() {}

    public static void main(String[] rounds) {
        PhotoLibrary library = PhotoLibrary.open();
        PhotosService photos = library.service();
        int offset = (int) library.assetCount() / 2;
        IntSupplier typed = () -> library.page(offset, 100).assets().size();
        IntSupplier text = () -> photos.nativeListAssets(100, offset).length();
        alternate(Integer.parseInt(rounds[0]), typed, text); // warms up
        System.out.println(alternate(Integer.parseInt(rounds[0]), typed, text));
    }

    private static String alternate(int rounds, IntSupplier ours, IntSupplier floor) {
        long[] ourTimes = new long[rounds];
        long[] floorTimes = new long[rounds];
        for (int i = 0; i < rounds; ++i) {
            ourTimes[i] = time(ours);
            floorTimes[i] = time(floor);
        }
        return median(ourTimes) + " " + median(floorTimes);
    }

    private static long time(IntSupplier call) {
        long start = System.nanoTime();
        if (call.getAsInt() < 100) {
            throw new IllegalStateException("no page");
        }
        return System.nanoTime() - start;
    }

    private static long median(long[] times) {
        Arrays.sort(times);
        return times[times.length / 2];
    }
}
