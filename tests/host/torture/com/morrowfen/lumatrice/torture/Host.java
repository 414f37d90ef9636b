package com.morrowfen.lumatrice.torture;

import com.google.gson.Gson;
import com.google.gson.JsonSyntaxException;
import com.morrowfen.lumatrice.service.PhotosService;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import java.util.Random;
import java.util.TreeMap;

/** One of the processes: threads that call all methods at random until a file says stop. */
public final class Host {
    record Asset(String id) {}

    record Collection(String id, String title, String kind) {
        boolean isFolder() {
            return kind.equals("folder");
        }

        boolean isSmart() {
            return kind.equals("smart");
        }
    }

    private static final int MOST_COLLECTIONS = 60;

    private final PhotosService photos;
    private final Pictures pictures;
    private final Facts facts;
    private final Path scratch;
    private final Random random;
    private final Gson gson = new Gson();
    private final Map<String, Integer> calls = new TreeMap<>();

    private Host(PhotosService photos, Pictures pictures, Facts facts, Path scratch, long seed)
            throws IOException {
        this.photos = photos;
        this.pictures = pictures;
        this.facts = facts;
        this.scratch = Files.createDirectories(scratch);
        this.random = new Random(seed);
    }

    /** Called with the library, the folder of the torture, a name of its own, threads and a seed. */
    public static void main(String[] arguments) throws Exception {
        PhotosService photos = new PhotosService(Path.of(arguments[0]));
        Path folder = Path.of(arguments[1]);
        String name = arguments[2];
        Pictures pictures = new Pictures(folder.resolve("pictures"));
        Facts facts = new Facts(folder.resolve(name + ".facts"));
        List<Thread> threads = new ArrayList<>();
        for (int i = 0; i < Integer.parseInt(arguments[3]); ++i) {
            Host host = new Host(photos, pictures, facts, folder.resolve(name + "-" + i),
                    Long.parseLong(arguments[4]) * 100 + i);
            threads.add(new Thread(() -> host.runUntil(folder.resolve("stop"))));
        }
        threads.forEach(Thread::start);
        for (Thread thread : threads) {
            thread.join();
        }
    }

    private void runUntil(Path stop) {
        try {
            while (!Files.exists(stop)) {
                act();
            }
        } catch (IOException | RuntimeException failure) {
            facts.add("FAULT", "exception", failure.toString());
        }
        calls.forEach((name, count) -> facts.add("calls", name, count.toString()));
    }

    private void act() throws IOException {
        int choice = random.nextInt(100);
        if (choice < 30) {
            look();
        } else if (choice < 45) {
            takeOut();
        } else if (choice < 72) {
            changeAssets();
        } else {
            organise();
        }
    }

    private void look() {
        called("looking");
        switch (random.nextInt(8)) {
            case 0 -> require(photos.nativeAuthorize() == 1, "not authorised");
            case 1 -> require(photos.nativeAssetCount() >= 0, "no count");
            case 2 -> parse(photos.nativeListAssets(50, random.nextInt(50)), Asset[].class);
            case 3 -> parse(photos.nativeListAlbumAssets(album(), 20, 0), Asset[].class);
            case 4 -> photos.nativeParentCollection(collection());
            case 5 -> photos.nativeCollectionTitle(collection());
            case 6 -> photos.nativeAlbumContainsAsset(album(), asset());
            default -> photos.nativeRequestThumbnail(asset(), 20 + random.nextInt(200), 64);
        }
    }

    private void takeOut() throws IOException {
        called("taking out");
        Path file = scratch.resolve("out");
        String asset = asset();
        int number = random.nextInt(4);
        switch (random.nextInt(4)) {
            case 0 -> photos.nativeCancelExport(number);
            case 1 -> {
                if (photos.nativeContentEditingImage(asset, file.toString()) == 0) {
                    require(pictures.isAnyPicture(file), "editing image of " + asset);
                }
            }
            default -> {
                if (photos.nativeExportToFile(asset, file.toString(), number) == 0) {
                    require(pictures.isAnyPicture(file) || pictures.isAnyRendered(file),
                            "export of " + asset);
                }
            }
        }
    }

    private void changeAssets() {
        called("changing assets");
        String asset = asset();
        switch (random.nextInt(8)) {
            case 0, 1 -> importSome();
            case 2 -> delete(asset);
            case 3 -> photos.nativeSetFavorite(new String[] {asset, asset()}, random.nextBoolean());
            case 4 -> photos.nativeSetHidden(new String[] {asset}, random.nextInt(4) == 0);
            case 5 -> photos.nativeCopyAssetAttributes(asset, asset());
            default -> photos.nativeApplyEdit(asset, pictures.rendered
                    .get(random.nextInt(pictures.rendered.size())).toString());
        }
    }

    private void organise() {
        called("organising");
        String[] some = {asset(), asset(), asset()};
        boolean few = collections(null, 0).size() < MOST_COLLECTIONS;
        switch (random.nextInt(9)) {
            case 0, 1 -> photos.nativeAddAssetsToAlbum(album(), some);
            case 2 -> photos.nativeRemoveAssetsFromAlbum(album(), some);
            case 3 -> photos.nativeRenameAlbum(collection(), "Renamed " + random.nextInt(1000));
            case 4, 5 -> photos.nativeDeleteAlbum(collection());
            case 6 -> {
                if (few) {
                    photos.nativeCreateAlbum("Album " + random.nextInt(1000), folderOrNull());
                }
            }
            case 7 -> {
                if (few) {
                    photos.nativeCreateFolder("Folder " + random.nextInt(1000), folderOrNull());
                }
            }
            default -> {
                if (few) {
                    photos.nativeDuplicateCollection(collection());
                }
            }
        }
    }

    private void importSome() {
        int first = random.nextInt(pictures.files.size());
        int second = random.nextInt(pictures.files.size());
        String[] identifiers = photos.nativeImportAssets(new String[] {
                pictures.files.get(first).toString(), pictures.files.get(second).toString()});
        require(identifiers != null && identifiers.length == 2, "import without an answer");
        note(identifiers[0], first);
        note(identifiers[1], second);
    }

    private void note(String identifier, int picture) {
        require(identifier != null, "import failed");
        facts.add("imported", identifier, Integer.toString(picture));
    }

    private void delete(String asset) {
        facts.add("deleting", asset);
        photos.nativeDeleteAssets(new String[] {asset});
    }

    /** One that was listed a moment ago; others may have deleted it since. */
    private String asset() {
        Asset[] page = parse(photos.nativeListAssets(20, random.nextInt(100)), Asset[].class);
        return page.length == 0 ? "none" : page[random.nextInt(page.length)].id();
    }

    private String album() {
        List<Collection> albums =
                collections(null, 0).stream().filter(one -> !one.isFolder()).toList();
        return albums.isEmpty() ? "none" : albums.get(random.nextInt(albums.size())).id();
    }

    private String collection() {
        List<Collection> all = collections(null, 0).stream().filter(one -> !one.isSmart()).toList();
        return all.isEmpty() ? "none" : all.get(random.nextInt(all.size())).id();
    }

    private String folderOrNull() {
        List<Collection> folders =
                collections(null, 0).stream().filter(Collection::isFolder).toList();
        return folders.isEmpty() || random.nextInt(3) == 0
                ? null : folders.get(random.nextInt(folders.size())).id();
    }

    private List<Collection> collections(String parent, int depth) {
        List<Collection> all = new ArrayList<>();
        for (Collection one : parse(photos.nativeListAlbums(parent), Collection[].class)) {
            all.add(one);
            if (one.isFolder() && depth < 3 && random.nextInt(3) == 0) {
                all.addAll(collections(one.id(), depth + 1));
            }
        }
        return all;
    }

    private <T> T parse(String json, Class<T> type) {
        try {
            return gson.fromJson(json, type);
        } catch (JsonSyntaxException failure) {
            facts.add("FAULT", "JSON", json);
            throw failure;
        }
    }

    private void called(String kind) {
        calls.merge(kind.replace(' ', '-'), 1, Integer::sum);
    }

    private void require(boolean condition, String what) {
        if (!condition) {
            facts.add("FAULT", "wrong:", what);
        }
    }
}
