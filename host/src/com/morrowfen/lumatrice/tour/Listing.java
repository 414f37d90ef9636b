package com.morrowfen.lumatrice.tour;

import com.google.gson.Gson;
import com.morrowfen.lumatrice.service.PhotosService;
import java.util.ArrayList;
import java.util.List;

/** The whole library, newest first, fetched page by page. */
final class Listing {
    private static final int PAGE_SIZE = 100;

    private final PhotosService photos;
    private final Gson gson = new Gson();

    Listing(PhotosService photos) {
        this.photos = photos;
    }

    List<Asset> all() {
        List<Asset> assets = new ArrayList<>();
        while (true) {
            Asset[] page = page(assets.size());
            assets.addAll(List.of(page));
            if (page.length < PAGE_SIZE) {
                return assets;
            }
        }
    }

    private Asset[] page(int offset) {
        return gson.fromJson(photos.nativeListAssets(PAGE_SIZE, offset), Asset[].class);
    }
}
