// photos-kit doctor: everything around the library that somebody who helps would ask about.
#include "platform/local/library/library_location.h"
#include "tool/command.h"
#include "tool/examination.h"
#include "tool/output.h"

#include <sqlite3.h>

#include <sys/utsname.h>

#include <algorithm>

namespace tool {

namespace {

void examineVersions(Examination& all) {
    Section& section = all.begin("Versions", "versions");
    section.add("photos-kit", "photosKit", PHOTOS_KIT_VERSION);
    section.add("SQLite", "sqlite", sqlite3_libversion());
    utsname system{};
    if (uname(&system) == 0)
        section.add("System", "system",
                    std::string(system.sysname) + " " + system.release + " " + system.machine);
}

void printForPeople(const Examination& all) {
    constexpr std::size_t labelWidth = 22;
    for (const Section& section : all.sections) {
        say(section.title);
        for (const Fact& fact : section.facts) {
            const std::string label = "  " + fact.label;
            const std::size_t room = labelWidth - std::min(labelWidth - 1, label.size());
            say(label + std::string(room, ' ') + fact.text);
        }
        if (section.facts.empty())
            say("  nothing else");
        say("");
    }
    for (const std::string& warning : all.warnings)
        complain(warning);
    if (all.warnings.empty())
        say("Nothing is in the way. Whether the library is whole, photos-kit verify tells.");
}

Json jsonOf(const Examination& all) {
    Json json = Json::object();
    for (const Section& section : all.sections) {
        Json& facts = json[section.key] = Json::object();
        for (const Fact& fact : section.facts)
            facts[fact.key] = fact.value;
    }
    json["warnings"] = all.warnings;
    return json;
}

int examine(bool json) {
    Examination all;
    examineVersions(all);
    if (const auto library = local::libraryPath()) {
        examinePlace(all, *library);
        examineDisk(all, *library);
        examineUsers(all, *library);
    } else {
        all.warnings.emplace_back("The home folder is not known (HOME is not set), so there is no "
                                  "library.");
    }
    examineImaging(all);
    if (json)
        print(jsonOf(all));
    else
        printForPeople(all);
    return all.warnings.empty() ? done : failed;
}

} // namespace

void addDoctor(Tool& tool) {
    CLI::App* command =
        tool.app.add_subcommand("doctor", "What the library runs on, and who uses it");
    const auto json = std::make_shared<bool>(false);
    addJson(command, *json);
    command->footer(
        R"(Shows versions, where the library lies and why, what its disk can do, which
other processes have the library open, which kinds of files can be decoded (a
small one of each is tried), and whether the decoders' sandbox holds.

Changes nothing. What somebody should do something about comes last, and makes
the exit code 1. Whether the library itself is whole, photos-kit verify tells.

Examples:
  photos-kit doctor
  photos-kit doctor --json > for-the-report.json)");
    tool.onRun(command, [json] { return examine(*json); });
}

} // namespace tool
