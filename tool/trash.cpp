// photos-kit trash: what was deleted can come back, until somebody empties the trash.
#include "platform/local/change/trash.h"
#include "tool/command.h"
#include "tool/library_view.h"
#include "tool/output.h"
#include "tool/text.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <unordered_set>

namespace tool {

namespace {

constexpr std::int64_t day = std::int64_t{24} * 60 * 60 * 1000;

std::int64_t now() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

int list(bool json) {
    requireLibrary();
    const auto trash = local::listTrash();
    if (json) {
        Json all = Json::array();
        for (const auto& asset : trash)
            all.push_back({{"id", asset.localIdentifier},
                           {"filename", asset.filename},
                           {"deletedMs", asset.trashedAt},
                           {"bytes", asset.size}});
        print(std::move(all));
        return done;
    }
    if (trash.empty()) {
        say("The trash is empty.");
        return done;
    }
    Table table({{"ID"}, {"DELETED"}, {"SIZE", true}, {"NAME", false, true}});
    for (const auto& asset : trash)
        table.add({shownIdentifier(asset.localIdentifier), dateText(asset.trashedAt),
                   sizeText(asset.size), asset.filename});
    table.print();
    return done;
}

int restore(const std::vector<std::string>& typed, bool json) {
    requireLibrary();
    std::unordered_set<std::string> trashed;
    for (auto& asset : local::listTrash())
        trashed.insert(std::move(asset.localIdentifier));
    std::vector<std::string> found;
    std::vector<std::string> missing;
    for (auto& identifier : assetIdentifiers(typed))
        (trashed.contains(identifier) ? found : missing).push_back(std::move(identifier));
    const std::size_t restored = local::restoreFromTrash(found);
    for (const std::string& identifier : missing)
        complain(shownIdentifier(identifier) + " is not in the trash.");
    if (json)
        print(Json{{"restored", restored}, {"missing", missing}});
    else
        say("Restored " + countText(static_cast<std::int64_t>(restored), "asset", "assets") + ".");
    return missing.empty() && restored == found.size() ? done : failed;
}

struct Emptying {
    std::int64_t days = local::keptInTrashMilliseconds / day;
    bool all = false; // whatever the days
    bool yes = false;
    bool json = false;
};

struct Doomed {
    std::int64_t before = 0;
    std::int64_t assets = 0;
    std::int64_t bytes = 0;
};

// What is deleted while the question waits is not what was asked about: the limit is now, unless
// the clock was once ahead.
Doomed doomedBy(const Emptying& wish) {
    const auto trash = local::listTrash();
    Doomed doomed{wish.all ? now() : now() - wish.days * day};
    if (wish.all && !trash.empty())
        doomed.before = std::max(doomed.before, trash.front().trashedAt + 1);
    for (const auto& asset : trash) {
        if (asset.trashedAt < doomed.before) {
            ++doomed.assets;
            doomed.bytes += asset.size;
        }
    }
    return doomed;
}

bool isAgreed(const Doomed& doomed) {
    if (isatty(STDIN_FILENO) == 0)
        throw Failure("Emptying the trash cannot be undone. Say --yes when nobody can be asked; "
                      "nothing was deleted.");
    std::fprintf(stderr, "Delete %s (%s) for good? This cannot be undone. [y/N] ",
                 countText(doomed.assets, "asset", "assets").c_str(),
                 sizeText(doomed.bytes).c_str());
    std::string answer;
    std::getline(std::cin, answer);
    return answer == "y" || answer == "Y" || answer == "yes" || answer == "Yes";
}

int report(std::int64_t deleted, std::int64_t bytes, bool json) {
    if (json)
        print(Json{{"deleted", deleted}});
    else if (deleted == 0)
        say("There was nothing to delete.");
    else
        say("Deleted " + countText(deleted, "asset", "assets") + " for good, " + sizeText(bytes) +
            ".");
    return done;
}

int empty(const Emptying& wish) {
    requireLibrary();
    if (!wish.all)
        local::dateImpossibleDeletions();
    const Doomed doomed = doomedBy(wish);
    if (doomed.assets == 0)
        return report(0, 0, wish.json);
    if (!wish.yes && !isAgreed(doomed)) {
        complain("Nothing was deleted.");
        return failed;
    }
    const auto deleted = static_cast<std::int64_t>(local::emptyTrash(doomed.before));
    return report(deleted, doomed.bytes, wish.json);
}

void addTrashList(Tool& tool, CLI::App* trash) {
    CLI::App* command = trash->add_subcommand("list", "What is in the trash, latest first");
    const auto json = std::make_shared<bool>(false);
    addJson(command, *json);
    tool.onRun(command, [json] { return list(*json); });
}

void addTrashRestore(Tool& tool, CLI::App* trash) {
    struct RestoreOptions {
        std::vector<std::string> identifiers;
        bool json = false;
    };
    CLI::App* command = trash->add_subcommand("restore", "Put assets back as they were");
    const auto options = std::make_shared<RestoreOptions>();
    command->add_option("ID", options->identifiers, "As trash list shows them")
        ->required()
        ->type_name("");
    addJson(command, options->json);
    command->footer("Marks, albums and edits come back with them.");
    tool.onRun(command, [options] { return restore(options->identifiers, options->json); });
}

void addTrashEmpty(Tool& tool, CLI::App* trash) {
    CLI::App* command = trash->add_subcommand("empty", "Delete for good what has lain there long");
    const auto wish = std::make_shared<Emptying>();
    constexpr std::int64_t mostDays = 100000;
    addNumber(command, "--older-than", wish->days, "What was deleted more days ago (30)", mostDays)
        ->type_name("DAYS");
    command->add_flag("--all", wish->all, "Everything, however new");
    command->add_flag("--yes", wish->yes, "Do not ask");
    addJson(command, wish->json);
    command->footer("Asks first. Where nobody can be asked it refuses unless --yes is given.\n\n"
                    "Examples:\n"
                    "  photos-kit trash empty\n"
                    "  photos-kit trash empty --older-than 90 --yes");
    tool.onRun(command, [wish] { return empty(*wish); });
}

} // namespace

void addTrash(Tool& tool) {
    CLI::App* trash = tool.app.add_subcommand("trash", "List, restore or empty the trash");
    trash->require_subcommand(1);
    trash->footer("Deleted assets stay in the trash, whole, until it is emptied; nothing empties\n"
                  "it by itself.");
    addTrashList(tool, trash);
    addTrashRestore(tool, trash);
    addTrashEmpty(tool, trash);
}

} // namespace tool
