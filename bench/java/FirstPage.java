import com.morrowfen.lumatrice.photos.PhotoLibrary;

/** A host's first page through the layer with types, in a JVM of its own. Prints nanoseconds. */
public final class FirstPage {
    private FirstPage() {}

    public static void main(String[] none) {
        long start = System.nanoTime();
        int assets = PhotoLibrary.open().page(0, 100).assets().size();
        long time = System.nanoTime() - start;
        if (assets < 100) {
            throw new IllegalStateException("no page");
        }
        System.out.println(time);
    }
}
