import java.awt.image.BufferedImage;
import java.io.File;
import java.io.IOException;
import javax.imageio.ImageIO;

/** Writes a picture that is wider than high. */
final class Picture {
    private Picture() {}

    public static void main(String[] file) throws IOException {
        ImageIO.write(new BufferedImage(60, 40, BufferedImage.TYPE_INT_RGB), "jpg", new File(file[0]));
    }
}
