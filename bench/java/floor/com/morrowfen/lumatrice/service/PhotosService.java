package com.morrowfen.lumatrice.service;

/** As little as JNI needs to find the native method. */
public final class PhotosService {
    public native String nativeListAssets(int count, int offset);
}
