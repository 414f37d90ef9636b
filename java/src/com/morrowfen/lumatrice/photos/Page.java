package com.morrowfen.lumatrice.photos;

import java.util.List;

/**
 * A piece of a listing.
 *
 * @param offset how many assets of the listing stand before it
 * @param limit how many assets were asked for; fewer may have come
 * @param assets what came; cannot be changed
 */
public record Page(int offset, int limit, List<Asset> assets) {
    /**
     * Whether the listing ends before this page.
     *
     * @return true if no asset came
     */
    public boolean isEmpty() {
        return assets.isEmpty();
    }

    /**
     * Where the page after this one begins.
     *
     * @return the offset to ask for next
     */
    public int nextOffset() {
        return (int) Math.min(Integer.MAX_VALUE, (long) offset + limit);
    }
}
