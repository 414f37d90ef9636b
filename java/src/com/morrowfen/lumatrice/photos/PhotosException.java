package com.morrowfen.lumatrice.photos;

import java.util.Objects;
import java.util.OptionalInt;

/**
 * The photo library did not do what it was asked to. Nothing was changed, unless the method's
 * description says otherwise.
 */
public class PhotosException extends RuntimeException {
    private static final long serialVersionUID = 1L;

    /** What failed: the native method's name. */
    private final String method;
    /** The result code, null if the method gave none. */
    private final Integer code;

    PhotosException(String method, Integer code, String meaning) {
        super(method + (code == null ? "" : " answered " + code) + ": " + meaning);
        this.method = Objects.requireNonNull(method);
        this.code = code;
    }

    /**
     * What failed.
     *
     * @return a method of {@link com.morrowfen.lumatrice.service.PhotosService}
     */
    public String method() {
        return method;
    }

    /**
     * The result code that the method gave; {@code PhotosService} describes them for each method.
     *
     * @return a negative number; empty for a method that answers with something else
     */
    public OptionalInt code() {
        return code == null ? OptionalInt.empty() : OptionalInt.of(code);
    }
}
