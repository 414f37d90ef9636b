// photos-kit settings: how the library treats its applications' wishes.
#include "platform/local/change/settings.h"
#include "platform/local/change/confirmation.h"
#include "tool/command.h"
#include "tool/library_view.h"
#include "tool/output.h"

namespace tool {

namespace {

int show(bool json) {
    requireLibrary();
    const local::Settings settings = local::readSettings();
    if (json) {
        print(Json{{"confirmDeletions", settings.confirmDeletions},
                   {"derivativesRoom", settings.derivativesRoom}});
        return done;
    }
    say(std::string("confirm-deletions  ") + (settings.confirmDeletions ? "ask" : "never"));
    say("derivatives-room   " + std::to_string(settings.derivativesRoom) + " bytes");
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

int derivativesRoom(std::uint64_t bytes, bool json) {
    requireLibrary();
    local::setDerivativesRoom(bytes);
    return show(json);
}

struct SettingsOptions {
    std::string answer;
    std::uint64_t room = 0;
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

    CLI::App* room =
        command->add_subcommand("derivatives-room", "How much disk kept thumbnails may take");
    room->fallthrough();
    room->add_option("SIZE", options->room, "500M, 2G, or 0: keep none")
        ->required()
        ->type_name("")
        ->transform(CLI::AsSizeValue(false).description(""))
        // A number below zero, or beyond what counts, has become one near the end.
        ->check(CLI::Range(std::uint64_t{0}, std::uint64_t{1} << 60).description(""));
    room->footer("Those used least recently go first. K, M and G count 1024s.");
    tool.onRun(room, [options] { return derivativesRoom(options->room, options->json); });
}

} // namespace tool
