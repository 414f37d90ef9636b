package com.morrowfen.lumatrice.torture;

import com.google.gson.Gson;
import com.morrowfen.lumatrice.service.PhotosService;
import java.io.IOException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.HashSet;
import java.util.List;
import java.util.Map;
import java.util.Set;

/** What must hold when everybody has gone, however they went. */
final class Aftermath {
    private final PhotosService photos;
    private final Facts.All facts;
    private final Pictures pictures;
    private final Path folder;
    private final Gson gson = new Gson();
    private final List<String> faults = new ArrayList<>();

    Aftermath(PhotosService photos, Facts.All facts, Pictures pictures, Path folder) {
        this.photos = photos;
        this.facts = facts;
        this.pictures = pictures;
        this.folder = folder;
    }

    List<String> faults() throws IOException {
        for (Map.Entry<String, Integer> one : facts.imported.entrySet()) {
            if (!facts.perhapsDeleted.contains(one.getKey())) {
                isStillWhatItWas(one.getKey(), one.getValue());
            }
        }
        countsAgree();
        isATree(null, new HashSet<>());
        return faults;
    }

    private void isStillWhatItWas(String asset, int picture) throws IOException {
        Path file = folder.resolve("afterwards");
        if (photos.nativeContentEditingImage(asset, file.toString()) != 0
                || !pictures.isPicture(file, picture)) {
            faults.add("FAULT lost or damaged: " + asset);
        } else if (photos.nativeExportToFile(asset, file.toString(), 0) != 0
                || !(pictures.isPicture(file, picture) || pictures.isAnyRendered(file))) {
            faults.add("FAULT half an edit: " + asset);
        }
    }

    private void countsAgree() {
        Host.Asset[] all = gson.fromJson(photos.nativeListAssets(1 << 20, 0), Host.Asset[].class);
        if (all.length != photos.nativeAssetCount()) {
            faults.add("FAULT " + all.length + " assets are listed and "
                    + photos.nativeAssetCount() + " counted");
        }
    }

    private void isATree(String parent, Set<String> seen) {
        for (Host.Collection one : gson.fromJson(
                photos.nativeListAlbums(parent), Host.Collection[].class)) {
            if (!seen.add(one.id())) {
                faults.add("FAULT twice in the tree: " + one.id());
            } else if (one.isFolder()) {
                isATree(one.id(), seen);
            }
        }
    }
}
