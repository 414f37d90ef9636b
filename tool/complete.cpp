// photos-kit complete: what may follow on a command line, for the shells' completions. Not among
// the commands that a person is told of.
#include "tool/complete.h"

#include "tool/output.h"

namespace tool {

namespace {

// An option that wants a value: what that may be, only the shell knows (a file, perhaps).
bool wantsValue(const CLI::App& command, const std::string& word) {
    const CLI::Option* const option = command.get_option_no_throw(word);
    return option && option->get_items_expected_max() > 0;
}

std::vector<std::string> choices(const CLI::App& command, bool options) {
    std::vector<std::string> names;
    if (!options) {
        for (const CLI::App* inner : command.get_subcommands({}))
            names.push_back(inner->get_name());
        return names;
    }
    for (const CLI::Option* option : command.get_options())
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    return names;
}

} // namespace

int complete(const CLI::App& app, std::vector<std::string> words) {
    if (words.empty())
        words.emplace_back();
    const std::string begun = words.back();
    words.pop_back();
    const CLI::App* command = &app;
    for (const std::string& word : words)
        for (const CLI::App* inner : command->get_subcommands({}))
            command = inner->check_name(word) ? inner : command;
    if (!words.empty() && wantsValue(*command, words.back()))
        return done;
    for (const std::string& name : choices(*command, begun.starts_with('-')))
        if (name.starts_with(begun))
            say(name);
    return done;
}

} // namespace tool
