package com.morrowfen.lumatrice.tour;

import com.morrowfen.lumatrice.photos.Collection;
import com.morrowfen.lumatrice.photos.PhotoLibrary;
import java.util.ArrayList;
import java.util.HashSet;
import java.util.List;
import java.util.Map;
import java.util.Objects;
import java.util.Optional;
import java.util.Set;
import java.util.function.Function;
import java.util.stream.Collectors;

/** Divides the tiles by user album, in the order of the tree and of each album. */
final class Sections {
    private final PhotoLibrary library;
    private final Map<String, Tile> byAsset;
    private final List<Section> sections = new ArrayList<>();

    private Sections(PhotoLibrary library, List<Tile> tiles) {
        this.library = library;
        byAsset = tiles.stream()
                .collect(Collectors.toMap(tile -> tile.asset().id(), Function.identity()));
    }

    /**
     * One a user album and a last one for what is in none; without albums one without heading.
     *
     * @param leftOut an album or folder at the top level that shows nothing new
     */
    static List<Section> of(PhotoLibrary library, List<Tile> tiles, Optional<String> leftOut) {
        Sections divided = new Sections(library, tiles);
        List<Collection> level = new ArrayList<>(library.collections());
        leftOut.ifPresent(id -> level.removeIf(one -> one.id().equals(id)));
        divided.addAlbums(level, "");
        if (divided.sections.isEmpty()) {
            return List.of(new Section(null, tiles));
        }
        divided.addRest(tiles);
        return divided.sections;
    }

    private void addAlbums(List<Collection> level, String path) {
        for (Collection one : level) {
            String title = path + one.title();
            switch (one.kind()) {
                case ALBUM -> sections.add(new Section(title, tilesIn(one.id())));
                case FOLDER -> addAlbums(library.collections(one.id()), title + " / ");
                case SMART -> { }
            }
        }
    }

    /** An album may hold what was not listed when the thumbnails were made. */
    private List<Tile> tilesIn(String albumId) {
        return library.albumAssets(albumId)
                .map(asset -> byAsset.get(asset.id()))
                .filter(Objects::nonNull)
                .toList();
    }

    private void addRest(List<Tile> tiles) {
        Set<Tile> shown = new HashSet<>();
        sections.forEach(section -> shown.addAll(section.tiles()));
        List<Tile> rest = tiles.stream().filter(tile -> !shown.contains(tile)).toList();
        if (!rest.isEmpty()) {
            sections.add(new Section("In no album", rest));
        }
    }
}
