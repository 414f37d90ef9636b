package com.morrowfen.lumatrice.photos;

import com.morrowfen.lumatrice.service.PhotosService;
import java.awt.image.BufferedImage;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import javax.imageio.ImageIO;

/** What a page of 100 costs through the layer with types, beside the listing's bare text. */
final class PageCost {
    private static final int ROUNDS = 3000;

    private PageCost() {}

    public static void main(String[] folder) throws Exception {
        PhotoLibrary library = PhotoLibrary.open();
        PhotosService photos = library.service();
        library.authorize();
        Path file = Path.of(folder[0], "cost.png");
        ImageIO.write(new BufferedImage(4, 4, BufferedImage.TYPE_INT_RGB), "png", file.toFile());
        List<Path> files = new ArrayList<>();
        for (int i = 0; i < 120; ++i) {
            files.add(Files.copy(file, Path.of(folder[0], "IMG_2024_" + i + ".png")));
        }
        library.importFiles(files);
        for (int pass = 0; pass < 4; ++pass) { // the first one warms up
            double text = median(() -> photos.nativeListAssets(100, 0).length());
            double typed = median(() -> library.page(0, 100).assets().size());
            System.out.printf("page of 100: text %.0f us, records %.0f us, ratio %.2f%n",
                    text, typed, typed / text);
        }
    }

    private static double median(java.util.function.IntSupplier call) {
        long[] times = new long[ROUNDS];
        long sum = 0;
        for (int i = 0; i < ROUNDS; ++i) {
            long start = System.nanoTime();
            sum += call.getAsInt();
            times[i] = System.nanoTime() - start;
        }
        Arrays.sort(times);
        return sum == 0 ? Double.NaN : times[ROUNDS / 2] / 1e3;
    }
}
