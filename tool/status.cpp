// photos-kit status: where the library lies and what is in it.
#include "platform/local/change/settings.h"
#include "platform/local/library/library_counts.h"
#include "platform/local/library/library_location.h"
#include "tool/command.h"
#include "tool/library_view.h"
#include "tool/output.h"
#include "tool/text.h"

#include <sys/stat.h>

#include <filesystem>

namespace tool {

namespace {

namespace fs = std::filesystem;

struct DiskUse {
    std::int64_t catalogue = 0;
    std::int64_t thumbnails = 0;
};

std::int64_t sizeOnDisk(const fs::path& path) {
    struct stat file = {};
    constexpr std::int64_t block = 512;
    return lstat(path.c_str(), &file) == 0 ? file.st_blocks * block : 0;
}

DiskUse diskUse(const fs::path& library) {
    DiskUse use;
    for (const char* name : {"library.db", "library.db-wal", "library.db-shm"})
        use.catalogue += sizeOnDisk(library / name);
    std::error_code error;
    const auto options = fs::directory_options::skip_permission_denied;
    for (fs::recursive_directory_iterator at(library / "derivatives", options, error), end;
         !error && at != end; at.increment(error))
        use.thumbnails += sizeOnDisk(at->path());
    return use;
}

struct Status {
    std::string path;
    local::LibraryCounts counts;
    local::Settings settings;
    DiskUse disk;

    std::int64_t allBytes() const {
        return counts.originalBytes + counts.editBytes + disk.thumbnails + disk.catalogue;
    }
};

Json jsonOf(const Status& status) {
    const local::LibraryCounts& counts = status.counts;
    Json json{{"library", status.path},
              {"exists", true},
              {"access", accessName(status.settings.access)},
              {"confirmDeletions", status.settings.confirmDeletions},
              {"assets", counts.photos + counts.videos},
              {"photos", counts.photos},
              {"videos", counts.videos},
              {"hidden", counts.hidden},
              {"favorites", counts.favorites},
              {"trashed", counts.trashed},
              {"albums", counts.albums},
              {"folders", counts.folders}};
    json["bytes"] = {{"originals", counts.originalBytes},  {"trashed", counts.trashedBytes},
                     {"edits", counts.editBytes},          {"thumbnails", status.disk.thumbnails},
                     {"catalogue", status.disk.catalogue}, {"all", status.allBytes()}};
    return json;
}

void line(const std::string& label, const std::string& value) {
    say(label + std::string(16 - label.size(), ' ') + value);
}

std::string describeAccess(const local::Settings& settings) {
    std::string access = accessName(settings.access);
    if (access == "limited")
        access += " to " +
                  countText(static_cast<std::int64_t>(settings.limitedChoice), "asset", "assets");
    return access;
}

void printForPeople(const Status& status) {
    const local::LibraryCounts& counts = status.counts;
    line("Photo library", status.path);
    line("Access", describeAccess(status.settings));
    line("Deletions", status.settings.confirmDeletions ? "are asked about" : "are not asked about");
    say("");
    line("Assets", std::to_string(counts.photos + counts.videos));
    line("  photos", std::to_string(counts.photos));
    line("  videos", std::to_string(counts.videos));
    line("  favourites", std::to_string(counts.favorites));
    line("  hidden", std::to_string(counts.hidden));
    line("Albums", std::to_string(counts.albums));
    line("Folders", std::to_string(counts.folders));
    line("In the trash", std::to_string(counts.trashed) +
                             (counts.trashed > 0 ? ", " + sizeText(counts.trashedBytes) : ""));
    say("");
    line("On disk", sizeText(status.allBytes()));
    line("  originals", sizeText(counts.originalBytes));
    line("  edits", sizeText(counts.editBytes));
    line("  thumbnails", sizeText(status.disk.thumbnails));
    line("  catalogue", sizeText(status.disk.catalogue));
}

int sayThatThereIsNone(const std::string& path, const std::string& why, bool json) {
    if (json)
        print(Json{{"library", path}, {"exists", false}});
    else
        say(why);
    return done;
}

int showStatus(bool json) {
    const auto path = local::libraryPath();
    if (const auto why = path ? whyThereIsNoLibrary(*path) : std::nullopt)
        return sayThatThereIsNone(*path, *why, json);
    requireLibrary();
    const Status status{*path, local::countLibrary(), local::readSettings(), diskUse(*path)};
    if (json)
        print(jsonOf(status));
    else
        printForPeople(status);
    return done;
}

} // namespace

void addStatus(Tool& tool) {
    CLI::App* command =
        tool.app.add_subcommand("status", "Where the library is, and what it holds");
    const auto json = std::make_shared<bool>(false);
    addJson(command, *json);
    command->footer("Counts are of the whole library, whatever applications may see of it. Those\n"
                    "of photos and videos include hidden ones, and leave out the trash.");
    tool.onRun(command, [json] { return showStatus(*json); });
}

} // namespace tool
