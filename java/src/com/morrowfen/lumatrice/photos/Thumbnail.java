package com.morrowfen.lumatrice.photos;

import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.io.InputStream;
import java.io.OutputStream;
import java.util.Objects;

/** A small picture of an asset: a complete JPEG file in memory. */
public final class Thumbnail {
    private final byte[] jpeg;
    private final int size; // height and width, 16 bits each; 0 if the file does not say

    Thumbnail(byte[] jpeg) {
        this.jpeg = Objects.requireNonNull(jpeg, "jpeg");
        size = frameSize(jpeg);
    }

    /**
     * The file's bytes.
     *
     * @return a copy, which is the caller's
     */
    public byte[] toByteArray() {
        return jpeg.clone();
    }

    /**
     * How long the file is.
     *
     * @return the number of bytes
     */
    public int length() {
        return jpeg.length;
    }

    /**
     * The picture's width, which may be more than was asked for.
     *
     * @return pixels; 0 if the file does not say
     */
    public int width() {
        return size & 0xFFFF;
    }

    /**
     * The picture's height, which may be more than was asked for.
     *
     * @return pixels; 0 if the file does not say
     */
    public int height() {
        return size >>> 16;
    }

    /**
     * The file as a stream, for {@code javax.imageio.ImageIO.read} or a toolkit's image class.
     *
     * @return a new stream over the bytes, without a copy of them; need not be closed
     */
    public InputStream newInputStream() {
        return new ByteArrayInputStream(jpeg);
    }

    /**
     * Writes the file.
     *
     * @param out where to; stays open
     * @throws IOException from the stream
     */
    public void writeTo(OutputStream out) throws IOException {
        out.write(jpeg);
    }

    private static int frameSize(byte[] jpeg) {
        int at = 2;
        while (at + 9 <= jpeg.length && jpeg[at] == (byte) 0xFF) {
            int marker = jpeg[at + 1] & 0xFF;
            if (isStartOfFrame(marker)) {
                return (number16(jpeg, at + 5) << 16) | number16(jpeg, at + 7);
            }
            at += 2 + number16(jpeg, at + 2);
        }
        return 0;
    }

    private static boolean isStartOfFrame(int marker) {
        // The others of this block are tables and extensions.
        return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8
                && marker != 0xCC;
    }

    private static int number16(byte[] bytes, int at) {
        return (bytes[at] & 0xFF) << 8 | (bytes[at + 1] & 0xFF);
    }
}
