package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.PHOTOS;
import static com.morrowfen.lumatrice.conformance.TestLibrary.assetsIn;
import static com.morrowfen.lumatrice.conformance.TestLibrary.level;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.morrowfen.lumatrice.conformance.TestLibrary.Collection;
import java.util.ArrayList;
import java.util.HashSet;
import java.util.List;
import java.util.Set;

/** All albums and folders below a folder, each before what it holds, in the library's order. */
final class CollectionTree {
    /** One of them without what differs between a tree and its copy. */
    record Shape(int depth, String kind, String title, List<String> assets) {}

    private final List<Collection> collections = new ArrayList<>();
    private final List<Shape> shapes = new ArrayList<>();
    private final Set<String> ids = new HashSet<>();

    private CollectionTree() {}

    /** Walks what a folder holds, or the whole library for null, and expects one sound tree. */
    static CollectionTree below(String folder) {
        CollectionTree tree = new CollectionTree();
        tree.walk(folder, 0);
        return tree;
    }

    /** The tree of a collection, which itself comes first. */
    static CollectionTree of(Collection top) {
        CollectionTree tree = new CollectionTree();
        tree.add(top, 0);
        return tree;
    }

    private long walk(String parent, int depth) {
        List<Collection> children = level(parent).stream().filter(one -> !one.isSmart()).toList();
        for (Collection child : children) {
            assertEquals(parent == null ? "" : parent, PHOTOS.nativeParentCollection(child.id()));
            add(child, depth);
        }
        return children.size();
    }

    private void add(Collection collection, int depth) {
        assertTrue(ids.add(collection.id()), "reached twice: " + collection);
        List<String> assets = collection.isFolder() ? List.of() : assetsIn(collection.id());
        collections.add(collection);
        shapes.add(new Shape(depth, collection.kind(), collection.title(), assets));
        long held = collection.isFolder() ? walk(collection.id(), depth + 1) : assets.size();
        assertEquals(held, collection.count(), collection.title());
    }

    List<Collection> collections() {
        return collections;
    }

    int size() {
        return collections.size();
    }

    List<Shape> shapes() {
        return shapes;
    }

    /** A short text that two trees share only if they hold the same in the same places. */
    String digest() {
        return size() + " collections, " + collections.hashCode() + ", " + shapes.hashCode();
    }

    /** The shapes of all that the first one holds. */
    List<Shape> shapesInside() {
        return shapes.subList(1, shapes.size());
    }
}
