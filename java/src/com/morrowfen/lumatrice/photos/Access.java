package com.morrowfen.lumatrice.photos;

/** How much of the photo library the user lets this program see and change. */
public enum Access {
    /** Nothing: denied, restricted, or not decided. Listings are empty and changes fail. */
    NONE,
    /** Everything. */
    FULL,
    /** Only the assets that the user picked. */
    LIMITED;

    /**
     * Whether there is anything to list.
     *
     * @return true for {@link #FULL} and {@link #LIMITED}
     */
    public boolean isGranted() {
        return this != NONE;
    }

    static Access of(int result) {
        return switch (result) {
            case 1 -> FULL;
            case 2 -> LIMITED;
            default -> NONE;
        };
    }
}
