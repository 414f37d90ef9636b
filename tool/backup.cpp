// photos-kit backup: a second copy of the library that is a library itself.
#include "platform/local/maintenance/backup.h"
#include "platform/local/library/library_location.h"
#include "tool/command.h"
#include "tool/interruption.h"
#include "tool/library_view.h"
#include "tool/output.h"
#include "tool/text.h"

namespace tool {

namespace {

struct BackupOptions {
    std::string folder;
    bool link = false;
    bool check = false;
    bool replace = false;
    bool json = false;
};

void printForPeople(const local::Backup& backup) {
    for (const local::Finding& finding : backup.findings)
        complain(local::nameOf(finding.kind) + ": " + finding.subject + " (asset " +
                 shownIdentifier(finding.asset) + "): " + finding.sentence);
    if (!backup.complete)
        return say("Stopped; the same command goes on from here.");
    std::string sentence = "Backed up " + countText(backup.copied + backup.linked, "file", "files");
    if (backup.linked > 0)
        sentence += ", " + std::to_string(backup.linked) + " of them as links";
    sentence += " (" + sizeText(backup.bytes) + "); " + std::to_string(backup.present) + " " +
                (backup.present == 1 ? "was" : "were") + " there already.";
    say(sentence);
    if (backup.setAside > 0)
        say(countText(backup.setAside, "file", "files") +
            " that the library no longer has went to the backup's folder quarantine.");
    if (!backup.findings.empty())
        say(countText(static_cast<std::int64_t>(backup.findings.size()), "file is", "files are") +
            " whole neither in the library nor in the backup. See photos-kit repair.");
}

Json jsonOf(const local::Backup& backup) {
    Json json{{"complete", backup.complete}, {"copied", backup.copied},
              {"linked", backup.linked},     {"bytes", backup.bytes},
              {"present", backup.present},   {"setAside", backup.setAside},
              {"findings", Json::array()}};
    for (const local::Finding& finding : backup.findings)
        json["findings"].push_back({{"kind", local::nameOf(finding.kind)},
                                    {"subject", finding.subject},
                                    {"asset", finding.asset},
                                    {"sentence", finding.sentence}});
    return json;
}

int backUp(const BackupOptions& options) {
    const auto place = local::libraryPath();
    if (!place)
        throw Failure("The home folder is not known (HOME is not set).");
    noteInterruptions();
    Progress bar("Backing up", 0);
    local::BackupOptions how;
    how.link = options.link;
    how.check = options.check;
    how.replace = options.replace;
    how.stop = [] { return interrupted(); };
    how.progress = [&](std::int64_t file, std::int64_t all) {
        bar.total(static_cast<std::size_t>(all));
        bar.show(static_cast<std::size_t>(file), "");
    };
    const local::Backup backup = local::backUpLibrary(*place, options.folder, how);
    bar.clear();
    if (options.json)
        print(jsonOf(backup));
    else
        printForPeople(backup);
    if (!backup.complete)
        return stopped;
    return backup.findings.empty() ? done : failed;
}

} // namespace

void addBackup(Tool& tool) {
    CLI::App* command = tool.app.add_subcommand("backup", "Copy the whole library to a folder");
    const auto options = std::make_shared<BackupOptions>();
    command->add_option("DIR", options->folder, "A new or empty folder, or an earlier backup")
        ->required()
        ->type_name("");
    command->add_flag("--link", options->link, "Hard links instead of copies, on the same disk");
    command->add_flag("--check", options->check, "Read what an earlier backup left there, too");
    command->add_flag("--replace", options->replace, "Even if nothing of DIR is in the library");
    addJson(command, options->json);
    command->footer(
        R"(The backup is the library as it was at one moment, with the trash, albums and
edits; applications may run meanwhile. Every file is read back. Later backups
to the same folder copy what is new; what was deleted for good since goes to
DIR/quarantine, which you may delete. Ctrl-C, a kill or a full disk leaves the
earlier backup in force, and the same command goes on.

Links take no room, but what damages one file damages both: they guard against
deletion, not against the disk.

A backup is a library. To restore it, put a copy of DIR in the place of the
library's folder, which photos-kit status names. A backup that was used as a
library, and has changed, is not written to any more.

Examples:
  photos-kit backup /media/disk/photos
  photos-kit verify --library /media/disk/photos)");
    tool.onRun(command, [options] { return backUp(*options); });
}

} // namespace tool
