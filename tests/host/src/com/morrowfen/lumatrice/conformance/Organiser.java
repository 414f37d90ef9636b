package com.morrowfen.lumatrice.conformance;

import static com.morrowfen.lumatrice.conformance.TestLibrary.PHOTOS;
import static com.morrowfen.lumatrice.conformance.TestLibrary.level;

import com.morrowfen.lumatrice.conformance.TestLibrary.Collection;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.Random;
import java.util.Set;
import java.util.stream.Stream;

/**
 * One of several processes that organise one tree at once. In the shared folder each does whatever
 * comes to its mind, also to what the others have made, and must live with any answer. In the kept
 * folder nobody deletes or renames what others made, so every answer must be a success.
 */
final class Organiser {
    /** Beyond this many in a folder nothing is copied there, and more is deleted. */
    private static final int CROWD = 4;

    /** How many are made in the kept folder; then they are only renamed. */
    private static final int MOST_KEPT = 150;

    private record Kept(String title, String parent) {}

    private final String shared;
    private final String kept;
    private final Random random;
    private final String name;
    private final Map<String, Kept> own = new LinkedHashMap<>();
    private int steps;

    Organiser(String shared, String kept, long seed) {
        this.shared = shared;
        this.kept = kept;
        random = new Random(seed);
        name = "p" + seed;
    }

    /** Works so long; answers one line for the number of steps and one for each it has kept. */
    List<String> run(long milliseconds) {
        long end = System.nanoTime() + milliseconds * 1_000_000;
        while (System.nanoTime() < end) {
            ++steps;
            changeShared();
            if (steps % 4 == 0) {
                changeKept();
            }
        }
        Stream<String> lines = own.entrySet().stream().map(
                one -> line(one.getKey(), one.getValue().title(), one.getValue().parent()));
        return Stream.concat(Stream.of(Integer.toString(steps)), lines).toList();
    }

    static String line(String id, String title, String parent) {
        return id + "|" + title + "|" + parent;
    }

    /** Deletes near the top and makes further below, so that folders go while they are in use. */
    private void changeShared() {
        String folder = shared;
        List<Collection> children = level(folder);
        Collection chosen = anyOf(children);
        if (chosen != null && random.nextInt(6) == 0) {
            expect(PHOTOS.nativeDeleteAlbum(chosen.id()), Set.of(0, -1));
            return;
        }
        while (chosen != null && chosen.isFolder() && random.nextInt(4) > 0) {
            folder = chosen.id();
            children = level(folder);
            chosen = anyOf(children);
        }
        int dice = random.nextInt(10);
        if (chosen == null || dice < 5) {
            create(folder);
        } else if (dice < 7) {
            expect(PHOTOS.nativeRenameAlbum(chosen.id(), title()), Set.of(0, -1, -2));
        } else if (dice < 8 && children.size() < CROWD) {
            PHOTOS.nativeDuplicateCollection(chosen.id());
        } else if (children.size() > CROWD) {
            expect(PHOTOS.nativeDeleteAlbum(chosen.id()), Set.of(0, -1));
        } else {
            String parent = PHOTOS.nativeParentCollection(chosen.id());
            check(parent.isEmpty() || parent.endsWith("/L0/020"), "parent " + parent);
        }
    }

    private Collection anyOf(List<Collection> collections) {
        return collections.isEmpty() ? null : collections.get(random.nextInt(collections.size()));
    }

    /** The folder may go at any moment, so that there may be no answer. */
    private void create(String folder) {
        if (random.nextBoolean()) {
            PHOTOS.nativeCreateFolder(title(), folder);
        } else {
            PHOTOS.nativeCreateAlbum(title(), folder);
        }
    }

    private void changeKept() {
        boolean growing = own.size() < MOST_KEPT;
        if (own.size() < 5 || growing && random.nextInt(3) == 0) {
            String title = title();
            // Folders of the others are as good as any.
            List<String> folders = Stream.concat(Stream.of(kept),
                    level(kept).stream().filter(Collection::isFolder).map(Collection::id)).toList();
            String parent = folders.get(random.nextInt(folders.size()));
            String made = random.nextInt(4) == 0 ? PHOTOS.nativeCreateFolder(title, parent)
                    : PHOTOS.nativeCreateAlbum(title, parent);
            check(made != null, "not made in the kept folder: " + title);
            own.put(made, new Kept(title, parent));
            return;
        }
        List<String> ids = List.copyOf(own.keySet());
        String id = ids.get(random.nextInt(ids.size()));
        String parent = own.get(id).parent();
        if (!growing || random.nextBoolean()) {
            String title = title();
            expect(PHOTOS.nativeRenameAlbum(id, title), Set.of(0));
            own.put(id, new Kept(title, parent));
        } else if (id.endsWith("/L0/040")) {
            String copy = PHOTOS.nativeDuplicateCollection(id);
            check(copy != null, "not copied in the kept folder: " + id);
            own.put(copy, new Kept(PHOTOS.nativeCollectionTitle(copy), parent));
        }
    }

    private String title() {
        return name + " " + random.nextInt(1_000_000);
    }

    private static void expect(int answer, Set<Integer> allowed) {
        check(allowed.contains(answer), "answer " + answer);
    }

    private static void check(boolean holds, String otherwise) {
        if (!holds) {
            throw new AssertionError(otherwise);
        }
    }
}
