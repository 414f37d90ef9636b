// photos-kit list: the assets that hosts see, newest first, or those of an album.
#include "tool/command.h"
#include "tool/library_view.h"
#include "tool/output.h"
#include "tool/text.h"

#include <algorithm>

namespace tool {

namespace {

struct ListOptions {
    std::size_t count = 100; // 0: all
    std::size_t offset = 0;
    std::string album;
    bool json = false;
};

struct Page {
    std::vector<platform::PHAsset> assets;
    std::size_t total = 0;
};

// Read at once: a terminal may take its time, and the fetch holds a snapshot of the library.
Page readPage(const ListOptions& options) {
    std::optional<platform::PHAssetCollection> album;
    if (!options.album.empty())
        album = albumWithIdentifier(options.album);
    const auto fetched = assetsOf(album ? &*album : nullptr);
    Page page;
    page.total = fetched.count();
    const std::size_t start = std::min(options.offset, page.total);
    const std::size_t rest = page.total - start;
    const std::size_t count = options.count == 0 ? rest : std::min(options.count, rest);
    for (std::size_t i = start; i < start + count; ++i) {
        auto asset = fetched.objectAtIndex(i);
        if (!asset)
            throw Failure("The library could not be read to the end of the page.");
        page.assets.push_back(std::move(*asset));
    }
    return page;
}

Json jsonOf(const Page& page) {
    Json json{{"total", page.total}, {"assets", Json::array()}};
    for (const auto& asset : page.assets)
        json["assets"].push_back({{"id", asset.localIdentifier},
                                  {"filename", filenameOf(asset)},
                                  {"isVideo", isVideo(asset)},
                                  {"width", asset.pixelWidth},
                                  {"height", asset.pixelHeight},
                                  {"createdMs", creationMilliseconds(asset)},
                                  {"isFavorite", asset.isFavorite},
                                  {"isHidden", asset.isHidden},
                                  {"isEdited", isEdited(asset)}});
    return json;
}

std::string marksOf(const platform::PHAsset& asset) {
    std::string marks;
    const auto add = [&](bool holds, char mark) {
        if (holds)
            marks += mark;
    };
    add(isVideo(asset), 'v');
    add(asset.isFavorite, 'f');
    add(isEdited(asset), 'e');
    add(asset.isHidden, 'h');
    return marks;
}

void printForPeople(const Page& page, std::size_t offset) {
    Table table({{"ID"}, {"TAKEN"}, {"PIXELS", true}, {""}, {"NAME", false, true}});
    for (const auto& asset : page.assets)
        table.add({shownIdentifier(asset.localIdentifier), dateText(creationMilliseconds(asset)),
                   std::to_string(asset.pixelWidth) + "x" + std::to_string(asset.pixelHeight),
                   marksOf(asset), filenameOf(asset)});
    if (!page.assets.empty())
        table.print();
    if (page.total == 0)
        say("There is nothing to list.");
    else if (page.assets.empty())
        say("There are only " + std::to_string(page.total) + ".");
    else if (page.assets.size() < page.total)
        say(std::to_string(offset + 1) + " to " + std::to_string(offset + page.assets.size()) +
            " of " + std::to_string(page.total) + ".");
}

int list(const ListOptions& options) {
    requireLibrary();
    requireAccess();
    const Page page = readPage(options);
    if (options.json)
        print(jsonOf(page));
    else
        printForPeople(page, options.offset);
    return done;
}

} // namespace

void addList(Tool& tool) {
    CLI::App* command = tool.app.add_subcommand("list", "Photos and videos, newest first");
    const auto options = std::make_shared<ListOptions>();
    addNumber(command, "--count", options->count, "How many (100); 0 for all")->type_name("N");
    addNumber(command, "--offset", options->offset, "How many to pass over")->type_name("N");
    command->add_option("--album", options->album, "Those of one album")->type_name("ID");
    addJson(command, options->json);
    command->footer(
        R"(Lists what applications see: hidden assets are in the album Hidden only, and
with limited access only the chosen ones appear. Letters before the name:
v video, f favourite, e edited, h hidden.

Examples:
  photos-kit list --count 20
  photos-kit list --album 00000000-0000-0000-0000-000000000203   (favourites)
  photos-kit list --count 0 --json | jq -r '.assets[] | .filename')");
    tool.onRun(command, [options] { return list(*options); });
}

} // namespace tool
