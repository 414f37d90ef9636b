// photos-kit revert: edited assets back to how they were imported.
#include "platform/local/change/revert.h"
#include "platform/local/change/edits.h"
#include "tool/command.h"
#include "tool/library_view.h"
#include "tool/output.h"
#include "tool/text.h"

namespace tool {

namespace {

// One by one, because only so it is known which of them had an edit.
int revert(const std::vector<std::string>& typed, bool json) {
    requireLibrary();
    std::vector<std::string> reverted;
    std::vector<std::string> untouched;
    for (const std::string& identifier : assetIdentifiers(typed)) {
        if (local::revertEdits({identifier}) > 0) {
            reverted.push_back(identifier);
        } else {
            complain(shownIdentifier(identifier) + " has no edit, or is not in the library.");
            untouched.push_back(identifier);
        }
    }
    if (json)
        print(Json{{"reverted", reverted}, {"untouched", untouched}});
    else
        say("Reverted " + countText(static_cast<std::int64_t>(reverted.size()), "asset", "assets") +
            ".");
    return untouched.empty() ? done : failed;
}

struct RevertOptions {
    std::vector<std::string> identifiers;
    bool json = false;
};

} // namespace

void addRevert(Tool& tool) {
    CLI::App* command = tool.app.add_subcommand("revert", "Drop the edits of assets");
    const auto options = std::make_shared<RevertOptions>();
    command->add_option("ID", options->identifiers, "As list shows them")
        ->required()
        ->type_name("");
    addJson(command, options->json);
    command->footer("The asset is then as it was imported. The edit is gone for good: export the\n"
                    "asset first to keep a copy.");
    tool.onRun(command, [options] { return revert(options->identifiers, options->json); });
}

} // namespace tool
