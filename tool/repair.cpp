// photos-kit repair: mends what verify finds, as far as that can be done.
#include "platform/local/maintenance/repair.h"
#include "platform/local/library/library_location.h"
#include "tool/command.h"
#include "tool/interruption.h"
#include "tool/library_view.h"
#include "tool/output.h"
#include "tool/text.h"

#include <algorithm>

namespace tool {

namespace {

using local::RepairStep;
using Outcome = local::RepairStep::Outcome;

struct RepairOptions {
    std::string backup;
    bool apply = false;
    bool quick = false;
    bool json = false;
};

Json jsonOf(const RepairStep& step) {
    Json json{{"outcome", local::nameOf(step.outcome)}, {"subject", step.subject}};
    if (!step.asset.empty())
        json["asset"] = step.asset;
    json["sentence"] = step.sentence;
    return json;
}

void printForPeople(const local::Repair& repair, bool applied) {
    for (const RepairStep& step : repair.steps)
        say(local::nameOf(step.outcome) + ": " + step.subject +
            (step.asset.empty() ? "" : " (asset " + shownIdentifier(step.asset) + ")") + ": " +
            step.sentence);
    if (!repair.complete)
        say("Stopped; nothing was changed.");
    else if (repair.steps.empty())
        say("The library is whole; there is nothing to repair.");
    else if (!applied)
        say("Nothing was changed. With --apply, what is planned is done.");
}

int repair(const RepairOptions& options) {
    const auto place = local::libraryPath();
    if (!place)
        throw Failure("The home folder is not known (HOME is not set).");
    noteInterruptions();
    Progress bar("Verifying", 0);
    local::RepairOptions how;
    how.apply = options.apply;
    how.backup = options.backup;
    how.content = !options.quick;
    how.stop = [] { return interrupted(); };
    how.progress = [&](std::int64_t files, std::int64_t all) {
        bar.total(static_cast<std::size_t>(all));
        bar.show(static_cast<std::size_t>(files), "");
    };
    const local::Repair result = local::repairLibrary(*place, how);
    bar.clear();
    if (options.json) {
        Json steps = Json::array();
        for (const RepairStep& step : result.steps)
            steps.push_back(jsonOf(step));
        print(Json{{"applied", options.apply}, {"complete", result.complete}, {"steps", steps}});
    } else {
        printForPeople(result, options.apply);
    }
    if (!result.complete)
        return stopped;
    const bool whole = std::all_of(result.steps.begin(), result.steps.end(), [](const auto& step) {
        return step.outcome == Outcome::done || step.outcome == Outcome::overtaken;
    });
    return whole ? done : failed;
}

} // namespace

void addRepair(Tool& tool) {
    CLI::App* command = tool.app.add_subcommand("repair", "Mend what verify finds");
    const auto options = std::make_shared<RepairOptions>();
    command->add_flag("--apply", options->apply, "Do it; else it only says what it would do");
    command->add_option("--from", options->backup, "Take lost files from this backup")
        ->type_name("DIR");
    command->add_flag("--quick", options->quick, "Do not read the files, only look for them");
    addJson(command, options->json);
    command->footer(
        R"(Says what it would do, and with --apply does it: counts are made anew; files
that nothing names are moved to quarantine/ in the library; lost or damaged
files are brought back from there, or from a backup. Nothing is unlinked, and no
asset is dropped: one whose file is nowhere keeps its place until a backup turns
up. Each thing is looked at again under the library's lock before it is touched,
so applications may run.

If the folder of originals is not there at all, nothing is judged: its disk is
perhaps not mounted. The exit code is 0 when all is well afterwards.

Examples:
  photos-kit repair
  photos-kit repair --apply --from /media/disk/backup)");
    tool.onRun(command, [options] { return repair(*options); });
}

} // namespace tool
