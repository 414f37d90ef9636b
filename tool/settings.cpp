// photos-kit settings: how the library treats its applications' wishes.
#include "platform/local/settings.h"
#include "platform/local/confirmation.h"
#include "tool/command.h"
#include "tool/library_view.h"
#include "tool/output.h"

namespace tool {

namespace {

int show(bool json) {
    requireLibrary();
    const bool ask = local::readSettings().confirmDeletions;
    if (json)
        print(Json{{"confirmDeletions", ask}});
    else
        say(std::string("confirm-deletions  ") + (ask ? "ask" : "never"));
    return done;
}

int confirmDeletions(bool ask, bool json) {
    if (ask && !local::canAskAboutDeletions())
        throw Failure("Nobody could be asked about a deletion, because zenity is not on PATH: "
                      "install the package zenity first. Nothing was changed.");
    requireOrMakeLibrary();
    local::setConfirmDeletions(ask);
    return show(json);
}

struct SettingsOptions {
    std::string answer;
    bool json = false;
};

} // namespace

void addSettings(Tool& tool) {
    CLI::App* command = tool.app.add_subcommand("settings", "Show or change settings");
    const auto options = std::make_shared<SettingsOptions>();
    addJson(command, options->json);
    command->footer("Without a setting it shows all of them.");
    tool.onRun(command, [options] { return show(options->json); });

    CLI::App* confirm = command->add_subcommand("confirm-deletions",
                                                "Whether an application's deletion is asked about");
    confirm->fallthrough();
    confirm->add_option("ANSWER", options->answer, "ask or never")
        ->required()
        ->type_name("")
        ->check(CLI::IsMember({"ask", "never"}).description(""));
    confirm->footer(
        "ask: a dialog (zenity) asks before an application deletes anything; what is\n"
        "refused stays. never: nobody is asked, since the trash keeps what is deleted.");
    tool.onRun(confirm,
               [options] { return confirmDeletions(options->answer == "ask", options->json); });
}

} // namespace tool
