package com.morrowfen.lumatrice.tour;

import com.google.gson.Gson;
import com.morrowfen.lumatrice.service.PhotosService;
import java.util.ArrayList;
import java.util.List;

/** Assets, fetched page by page. */
final class Listing {
    private static final int PAGE_SIZE = 100;

    private final PhotosService photos;
    private final Gson gson = new Gson();

    Listing(PhotosService photos) {
        this.photos = photos;
    }

    /** The whole library, newest first. */
    List<Asset> all() {
        return pages(photos::nativeListAssets);
    }

    /** An album, in the order in which the library gives it. */
    List<Asset> ofAlbum(String albumId) {
        return pages((count, offset) -> photos.nativeListAlbumAssets(albumId, count, offset));
    }

    private interface Pages {
        String page(int count, int offset);
    }

    private List<Asset> pages(Pages pages) {
        List<Asset> assets = new ArrayList<>();
        while (true) {
            Asset[] page = gson.fromJson(pages.page(PAGE_SIZE, assets.size()), Asset[].class);
            assets.addAll(List.of(page));
            if (page.length < PAGE_SIZE) {
                return assets;
            }
        }
    }
}
