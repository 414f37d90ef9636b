package com.morrowfen.lumatrice.tour;

import java.io.PrintStream;
import java.util.List;

/** Prints albums and folders, one a line, with lines that show what lies in what. */
final class TreePrinter {
    private final PrintStream out;

    TreePrinter(PrintStream out) {
        this.out = out;
    }

    void print(List<CollectionTree.Node> topLevel) {
        for (CollectionTree.Node node : topLevel) {
            out.println("  " + node.collection().description());
            printBelow(node, "  ");
        }
    }

    private void printBelow(CollectionTree.Node node, String indentation) {
        int last = node.children().size() - 1;
        for (int i = 0; i <= last; ++i) {
            CollectionTree.Node child = node.children().get(i);
            out.println(indentation + (i == last ? "└── " : "├── ")
                    + child.collection().description());
            printBelow(child, indentation + (i == last ? "    " : "│   "));
        }
    }
}
