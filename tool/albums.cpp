// photos-kit albums: smart albums, and the tree of the user's albums and folders.
#include "tool/command.h"
#include "tool/library_view.h"
#include "tool/output.h"
#include "tool/text.h"

namespace tool {

namespace {

struct Entry {
    std::string identifier;
    std::string title;
    const char* kind = "";
    std::size_t count = 0;
    std::size_t depth = 0;
    std::optional<std::string> parent; // the folder that holds it
};

struct Level {
    platform::PHFetchResult<platform::PHCollection> collections;
    std::size_t next = 0;
    std::optional<std::string> folder;
};

Entry entryOf(const platform::PHAssetCollection& album) {
    const bool smart = album.assetCollectionType == platform::PHAssetCollectionTypeSmartAlbum;
    return {album.localIdentifier, titleOf(album), smart ? "smart" : "album",
            assetsOf(&album).count()};
}

void appendSmartAlbums(std::vector<Entry>& entries) {
    const auto albums = platform::fetchAssetCollectionsWithType(
        platform::PHAssetCollectionTypeSmartAlbum, platform::PHAssetCollectionSubtypeAny);
    for (std::size_t i = 0; i < albums.count(); ++i) {
        if (const auto album = albums.objectAtIndex(i))
            entries.push_back(entryOf(*album));
    }
}

// Folders can be nested deeper than this process's stack: the way down is kept in a vector.
void appendTree(std::vector<Entry>& entries) {
    std::vector<Level> levels;
    levels.push_back({platform::fetchTopLevelUserCollections(), 0, std::nullopt});
    while (!levels.empty()) {
        Level& level = levels.back();
        const auto collection = level.collections.objectAtIndex(level.next++);
        if (!collection) {
            levels.pop_back();
            continue;
        }
        Entry entry;
        std::optional<Level> below;
        if (const auto* folder = std::get_if<platform::PHCollectionList>(&*collection)) {
            below = {platform::fetchCollectionsInCollectionList(*folder), 0,
                     folder->localIdentifier};
            entry = {folder->localIdentifier, titleOf(*folder), "folder",
                     below->collections.count()};
        } else {
            entry = entryOf(std::get<platform::PHAssetCollection>(*collection));
        }
        entry.depth = levels.size() - 1;
        entry.parent = level.folder;
        entries.push_back(std::move(entry));
        if (below)
            levels.push_back(std::move(*below));
    }
}

Json jsonOf(const std::vector<Entry>& entries) {
    Json json = Json::array();
    for (const Entry& entry : entries)
        json.push_back({{"id", entry.identifier},
                        {"title", entry.title},
                        {"kind", entry.kind},
                        {"count", entry.count},
                        {"parent", entry.parent ? Json(*entry.parent) : Json()}});
    return json;
}

void printForPeople(const std::vector<Entry>& entries) {
    Table table({{"ID"}, {"KIND"}, {"HOLDS", true}, {"TITLE", false, true}});
    for (const Entry& entry : entries)
        table.add({shownIdentifier(entry.identifier), entry.kind, std::to_string(entry.count),
                   std::string(2 * entry.depth, ' ') + entry.title});
    table.print();
}

int showAlbums(bool json) {
    requireLibrary();
    requireAccess();
    std::vector<Entry> entries;
    appendSmartAlbums(entries);
    appendTree(entries);
    if (json)
        print(jsonOf(entries));
    else
        printForPeople(entries);
    return done;
}

} // namespace

void addAlbums(Tool& tool) {
    CLI::App* command = tool.app.add_subcommand("albums", "The tree of albums and folders");
    const auto json = std::make_shared<bool>(false);
    addJson(command, *json);
    command->footer("First the albums that the library keeps by itself, then the user's own; what\n"
                    "a folder holds stands below it, indented. In JSON each names its folder as\n"
                    "its parent.");
    tool.onRun(command, [json] { return showAlbums(*json); });
}

} // namespace tool
