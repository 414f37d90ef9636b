// photos-kit access: what applications may see of the library, decided by its owner.
#include "platform/local/change/settings.h"
#include "tool/command.h"
#include "tool/library_view.h"
#include "tool/output.h"
#include "tool/text.h"

namespace tool {

namespace {

int show(bool json) {
    requireLibrary();
    const local::Settings settings = local::readSettings();
    const std::string access = accessName(settings.access);
    if (json) {
        print(Json{{"access", access}, {"chosen", settings.limitedChoice}});
    } else if (access == "limited") {
        say("Applications see " +
            countText(static_cast<std::int64_t>(settings.limitedChoice), "chosen asset",
                      "chosen assets") +
            " (limited access).");
    } else {
        say(access == "full" ? "Applications see the whole library (full access)."
                             : "Applications see nothing (access is " + access + ").");
    }
    return done;
}

struct AccessOptions {
    std::vector<std::string> identifiers;
    bool json = false;
};

} // namespace

void addAccess(Tool& tool) {
    CLI::App* command = tool.app.add_subcommand("access", "What applications may see");
    const auto options = std::make_shared<AccessOptions>();
    addJson(command, options->json);
    command->footer(
        R"(Without a word it shows what holds. The decision is in force at once, also for
applications that run; this tool's list, albums, import and export keep to it
too. With limited access, what an application imports joins the chosen assets.

Examples:
  photos-kit access denied
  photos-kit access limited 0F4C2B1E-6D9A-4A55-9C56-0C0B2F0D8A11)");
    tool.onRun(command, [options] { return show(options->json); });

    const auto decide = [&](CLI::App* way, auto decision) {
        way->fallthrough();
        tool.onRun(way, [options, decision] {
            requireOrMakeLibrary();
            decision(*options);
            return show(options->json);
        });
    };
    decide(command->add_subcommand("full", "The whole library"),
           [](const AccessOptions&) { local::grantFullAccess(); });
    CLI::App* limited = command->add_subcommand("limited", "These assets and no others");
    limited->add_option("ID", options->identifiers, "As list shows them")
        ->required()
        ->type_name("");
    decide(limited, [](const AccessOptions& given) {
        local::limitAccess(assetIdentifiers(given.identifiers));
    });
    decide(command->add_subcommand("denied", "Nothing"),
           [](const AccessOptions&) { local::denyAccess(); });
}

} // namespace tool
