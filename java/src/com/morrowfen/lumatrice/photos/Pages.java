package com.morrowfen.lumatrice.photos;

import java.util.Spliterator;
import java.util.Spliterators;
import java.util.function.Consumer;
import java.util.stream.Stream;
import java.util.stream.StreamSupport;

/** A listing, page after page, each fetched when it is asked for. */
final class Pages extends Spliterators.AbstractSpliterator<Page> {
    /** Where pages come from. */
    interface Source {
        Page page(int offset, int limit);
    }

    private final Source source;
    private final int size;
    private int offset;

    private Pages(int size, Source source) {
        super(Long.MAX_VALUE, Spliterator.ORDERED | Spliterator.NONNULL | Spliterator.IMMUTABLE);
        this.size = size;
        this.source = source;
    }

    static Stream<Page> stream(int size, Source source) {
        if (size < 1) {
            throw new IllegalArgumentException("no size of a page: " + size);
        }
        return StreamSupport.stream(new Pages(size, source), false);
    }

    /** A short page is not the last one: an asset may have gone while the page was written. */
    @Override
    public boolean tryAdvance(Consumer<? super Page> action) {
        if (offset == Integer.MAX_VALUE) {
            return false;
        }
        Page page = source.page(offset, size);
        if (page.isEmpty()) {
            return false;
        }
        offset = page.nextOffset();
        action.accept(page);
        return true;
    }
}
