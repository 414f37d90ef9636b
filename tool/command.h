// Subcommands. Each is one file with an add... function that describes its options and says what
// is to be run; main runs it when the command line has been understood.
#pragma once

#include <CLI/CLI.hpp>

#include <charconv>
#include <functional>
#include <limits>
#include <string>
#include <system_error>
#include <utility>

namespace tool {

struct Tool {
    CLI::App app;
    std::function<int()> action; // answers the exit code

    // `work` is the action when `command` is given without a further subcommand.
    void onRun(CLI::App* command, std::function<int()> work) {
        command->callback([this, command, work = std::move(work)] {
            if (command->get_subcommands().empty())
                action = work;
        });
    }
};

inline void addJson(CLI::App* command, bool& json) {
    command->add_flag("--json", json, "Print JSON, for programs");
}

// An option that takes a whole number in decimal digits. What is anything else, or more than
// `most`, is refused: a number is never guessed at.
template <class Number>
CLI::Option* addNumber(CLI::App* command, const std::string& name, Number& number,
                       const std::string& help, Number most = std::numeric_limits<Number>::max()) {
    const auto take = [&number, name, most](const std::string& text) {
        Number given = 0;
        const char* const end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data(), end, given);
        if (error != std::errc{} || stop != end || std::cmp_less(given, 0) || given > most)
            throw CLI::ValidationError(name, "\"" + text + "\" is no whole number from 0 to " +
                                                 std::to_string(most));
        number = given;
    };
    return command->add_option_function<std::string>(name, take, help);
}

void addStatus(Tool& tool);
void addImport(Tool& tool);
void addList(Tool& tool);
void addAlbums(Tool& tool);
void addExport(Tool& tool);
void addTrash(Tool& tool);
void addRevert(Tool& tool);
void addAccess(Tool& tool);
void addSettings(Tool& tool);
void addVerify(Tool& tool);
void addRepair(Tool& tool);
void addBackup(Tool& tool);
void addDoctor(Tool& tool);

} // namespace tool
