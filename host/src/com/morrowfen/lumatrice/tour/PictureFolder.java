package com.morrowfen.lumatrice.tour;

import com.morrowfen.lumatrice.photos.ImportResult;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.SortedMap;
import java.util.TreeMap;

/** A folder of the disk with what was imported from it. Folders without any of it are left out. */
final class PictureFolder {
    /** By their names. */
    final SortedMap<String, PictureFolder> subfolders = new TreeMap<>();

    /** Of the files that lie in the folder itself, by path. */
    final List<String> assetIds = new ArrayList<>();

    private PictureFolder() {}

    /**
     * @param root holds all of the files, directly or further below
     * @param results in the order of the files
     */
    static PictureFolder of(Path root, List<ImportResult> results) {
        PictureFolder top = new PictureFolder();
        for (ImportResult result : results) {
            result.assetId().ifPresent(id ->
                    top.at(root.relativize(result.file()).getParent()).assetIds.add(id));
        }
        return top;
    }

    private PictureFolder at(Path below) {
        PictureFolder folder = this;
        if (below != null) {
            for (Path name : below) {
                folder = folder.subfolders.computeIfAbsent(
                        name.toString(), absent -> new PictureFolder());
            }
        }
        return folder;
    }
}
