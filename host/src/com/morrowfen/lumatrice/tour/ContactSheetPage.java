package com.morrowfen.lumatrice.tour;

import com.morrowfen.lumatrice.photos.Asset;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;

/** The contact sheet as a web page, with the thumbnails in files beside it. */
final class ContactSheetPage {
    private static final String STYLE = """
            body { margin: 2.5rem; background: #14161a; color: #e8e9eb;
                   font: 15px/1.4 system-ui, sans-serif; }
            h1 { margin: 0; font-weight: 600; }
            header p { margin: .25rem 0 2rem; color: #9aa0a8; }
            h2 { margin: 2.5rem 0 1rem; font-size: 1.25rem; font-weight: 600; }
            h2 small { margin-left: .5rem; font-weight: 400; font-size: 15px; }
            section > div { display: grid; gap: 1.5rem;
                   grid-template-columns: repeat(auto-fill, minmax(240px, 1fr)); }
            figure { margin: 0; }
            .picture { position: relative; aspect-ratio: 4 / 3; border-radius: 8px;
                       overflow: hidden; background: #23262c; display: grid;
                       place-items: center; color: #6d737b; }
            img { position: absolute; width: 100%; height: 100%; object-fit: cover; }
            .video::after { content: "▶"; position: absolute; left: 10px; bottom: 10px;
                            width: 30px; height: 30px; border-radius: 50%; color: #fff;
                            background: #000a; font-size: 13px; line-height: 30px;
                            text-align: center; }
            figcaption { margin-top: .5rem; overflow: hidden; white-space: nowrap;
                         text-overflow: ellipsis; }
            small { color: #9aa0a8; }
            """;

    private ContactSheetPage() {}

    /** @param tiles all that there are, in one section or more */
    static Path write(
            String title, List<Tile> tiles, List<Section> sections, Path output)
            throws IOException {
        StringBuilder html = new StringBuilder();
        html.append("<!doctype html>\n<html lang=\"en\">\n<meta charset=\"utf-8\">\n<title>")
                .append(escape(title)).append("</title>\n<style>\n").append(STYLE)
                .append("</style>\n<header><h1>").append(escape(title)).append("</h1>\n<p>")
                .append(Cell.totals(tiles))
                .append(" · newest first</p></header>\n<main>\n");
        for (Section section : sections) {
            appendSection(html, section, output);
        }
        html.append("</main>\n</html>\n");
        Path page = output.resolve("contact-sheet.html");
        Files.writeString(page, html);
        return page;
    }

    private static void appendSection(StringBuilder html, Section section, Path output) {
        html.append("<section>");
        if (section.hasHeading()) {
            html.append("<h2>").append(escape(section.heading())).append(" <small>")
                    .append(Cell.totals(section.tiles())).append("</small></h2>");
        }
        html.append("<div>\n");
        for (Tile tile : section.tiles()) {
            appendFigure(html, tile, output);
        }
        html.append("</div></section>\n");
    }

    private static void appendFigure(StringBuilder html, Tile tile, Path output) {
        Asset asset = tile.asset();
        String name = escape(tile.name());
        html.append("<figure title=\"").append(name).append("\"><div class=\"picture")
                .append(asset.isVideo() ? " video" : "").append("\">");
        if (tile.hasPicture()) {
            html.append("<img loading=\"lazy\" alt=\"\" src=\"")
                    .append(output.relativize(tile.file()).toString().replace('\\', '/'))
                    .append("\">");
        } else {
            html.append("no picture");
        }
        html.append("</div><figcaption>").append(name).append("<br><small>")
                .append(Cell.details(asset)).append("</small></figcaption></figure>\n");
    }

    private static String escape(String text) {
        return text.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")
                .replace("\"", "&quot;");
    }
}
