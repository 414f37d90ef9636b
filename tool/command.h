// Subcommands. Each is one file with an add... function that describes its options and says what
// is to be run; main runs it when the command line has been understood.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>

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
