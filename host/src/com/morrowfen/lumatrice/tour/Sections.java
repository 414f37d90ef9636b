package com.morrowfen.lumatrice.tour;

import java.util.ArrayList;
import java.util.HashSet;
import java.util.List;
import java.util.Map;
import java.util.Objects;
import java.util.Set;
import java.util.function.Function;
import java.util.stream.Collectors;

/** Divides the thumbnails by user album, in the order of the tree and of each album. */
final class Sections {
    private final Listing listing;
    private final List<Thumbnail> thumbnails;
    private final Map<String, Thumbnail> byAsset;
    private final List<Section> sections = new ArrayList<>();

    private Sections(Listing listing, List<Thumbnail> thumbnails) {
        this.listing = listing;
        this.thumbnails = thumbnails;
        byAsset = thumbnails.stream()
                .collect(Collectors.toMap(one -> one.asset().id(), Function.identity()));
    }

    /** One a user album and a last one for what is in none; without albums one without heading. */
    static List<Section> of(
            List<CollectionTree.Node> tree, Listing listing, List<Thumbnail> thumbnails) {
        Sections divided = new Sections(listing, thumbnails);
        divided.addAlbums(tree, "");
        if (divided.sections.isEmpty()) {
            return List.of(new Section(null, thumbnails));
        }
        divided.addRest();
        return divided.sections;
    }

    private void addAlbums(List<CollectionTree.Node> level, String path) {
        for (CollectionTree.Node node : level) {
            Collection collection = node.collection();
            if (collection.isUserAlbum()) {
                sections.add(new Section(
                        path + collection.title(), thumbnailsIn(collection.id())));
            }
            addAlbums(node.children(), path + collection.title() + " / ");
        }
    }

    /** An album may hold what was not listed when the thumbnails were made. */
    private List<Thumbnail> thumbnailsIn(String albumId) {
        return listing.ofAlbum(albumId).stream()
                .map(asset -> byAsset.get(asset.id()))
                .filter(Objects::nonNull)
                .toList();
    }

    private void addRest() {
        Set<Thumbnail> shown = new HashSet<>();
        sections.forEach(section -> shown.addAll(section.thumbnails()));
        List<Thumbnail> rest =
                thumbnails.stream().filter(thumbnail -> !shown.contains(thumbnail)).toList();
        if (!rest.isEmpty()) {
            sections.add(new Section("In no album", rest));
        }
    }
}
