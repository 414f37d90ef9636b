package com.morrowfen.lumatrice.tour;

import com.morrowfen.lumatrice.photos.Collection;
import com.morrowfen.lumatrice.photos.PhotoLibrary;
import java.io.PrintStream;
import java.util.List;
import java.util.Locale;

/** Prints albums and folders, one a line, with lines that show what lies in what. */
final class TreePrinter {
    private final PhotoLibrary library;
    private final PrintStream out;

    TreePrinter(PhotoLibrary library, PrintStream out) {
        this.library = library;
        this.out = out;
    }

    /** Everything; the smart albums come last. */
    void print() {
        for (Collection collection : library.collections()) {
            out.println("  " + describe(collection));
            printBelow(collection, "  ");
        }
    }

    private void printBelow(Collection parent, String indentation) {
        if (parent.kind() != Collection.Kind.FOLDER) {
            return;
        }
        List<Collection> children = library.collections(parent.id());
        int last = children.size() - 1;
        for (int i = 0; i <= last; ++i) {
            out.println(indentation + (i == last ? "└── " : "├── ") + describe(children.get(i)));
            printBelow(children.get(i), indentation + (i == last ? "    " : "│   "));
        }
    }

    private static String describe(Collection one) {
        return Printable.line(one.title()) + switch (one.kind()) {
            case FOLDER -> String.format(Locale.ROOT, " (folder, %,d inside)", one.count());
            case SMART -> " (smart album, " + Cell.counted(one.count(), "asset") + ")";
            case ALBUM -> " (album, " + Cell.counted(one.count(), "asset") + ")";
        };
    }
}
