package com.morrowfen.lumatrice.service;

/**
 * The native library could not be loaded. The message says what is wrong and what to do, for the
 * person who installs or starts the program.
 */
public class PhotosLoadException extends RuntimeException {
    private static final long serialVersionUID = 1L;

    PhotosLoadException(String message) {
        super(message);
    }

    PhotosLoadException(String message, Throwable cause) {
        super(message, cause);
    }
}
