package com.morrowfen.lumatrice.photos;

import java.util.ArrayList;
import java.util.Collections;
import java.util.List;

/** The listings that the native methods write, read straight into records. */
final class Listings {
    private Listings() {}

    static List<Asset> assets(String method, String json) {
        List<Asset> all = new ArrayList<>();
        try {
            JsonReader in = new JsonReader(json);
            for (boolean more = in.beginArray(); more; more = in.nextElement()) {
                all.add(asset(in));
            }
            in.end();
        } catch (IllegalArgumentException malformed) {
            throw damaged(method, malformed);
        }
        return Collections.unmodifiableList(all);
    }

    static List<Collection> collections(String method, String json) {
        List<Collection> all = new ArrayList<>();
        try {
            JsonReader in = new JsonReader(json);
            for (boolean more = in.beginArray(); more; more = in.nextElement()) {
                all.add(collection(in));
            }
            in.end();
        } catch (IllegalArgumentException malformed) {
            throw damaged(method, malformed);
        }
        return Collections.unmodifiableList(all);
    }

    private static PhotosException damaged(String method, IllegalArgumentException malformed) {
        return new PhotosException(method, null,
                "The listing is damaged: " + malformed.getMessage() + ".");
    }

    private static Asset asset(JsonReader in) {
        String id = null;
        String filename = null;
        boolean isVideo = false;
        int width = 0;
        int height = 0;
        long createdMs = 0;
        boolean isFavorite = false;
        boolean isHidden = false;
        for (boolean more = in.beginObject(); more; more = in.nextField()) {
            if (in.keyIs("id")) {
                id = in.readString();
            } else if (in.keyIs("filename")) {
                filename = in.readString();
            } else if (in.keyIs("isVideo")) {
                isVideo = in.readBoolean();
            } else if (in.keyIs("width")) {
                width = in.readSize();
            } else if (in.keyIs("height")) {
                height = in.readSize();
            } else if (in.keyIs("createdMs")) {
                createdMs = in.readLong();
            } else if (in.keyIs("isFavorite")) {
                isFavorite = in.readBoolean();
            } else if (in.keyIs("isHidden")) {
                isHidden = in.readBoolean();
            } else {
                in.skipValue();
            }
        }
        return new Asset(given("id", id), given("filename", filename), isVideo, width, height,
                createdMs, isFavorite, isHidden);
    }

    private static Collection collection(JsonReader in) {
        String id = null;
        String title = null;
        String kind = null;
        long count = 0;
        for (boolean more = in.beginObject(); more; more = in.nextField()) {
            if (in.keyIs("id")) {
                id = in.readString();
            } else if (in.keyIs("title")) {
                title = in.readString();
            } else if (in.keyIs("kind")) {
                kind = in.readString();
            } else if (in.keyIs("count")) {
                count = in.readLong();
            } else {
                in.skipValue();
            }
        }
        return new Collection(given("id", id), given("title", title), kind(given("kind", kind)),
                count);
    }

    private static Collection.Kind kind(String name) {
        return switch (name) {
            case "album" -> Collection.Kind.ALBUM;
            case "folder" -> Collection.Kind.FOLDER;
            case "smart" -> Collection.Kind.SMART;
            default -> throw new IllegalArgumentException("unknown kind of collection");
        };
    }

    private static String given(String name, String value) {
        if (value == null) {
            throw new IllegalArgumentException("a record without " + name);
        }
        return value;
    }
}
