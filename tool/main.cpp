// photos-kit: the photo library of this user, at a terminal.
#include "platform/local/system/library_error.h"
#include "tool/command.h"
#include "tool/complete.h"
#include "tool/output.h"

#include <clocale>
#include <cstdio>
#include <string_view>

namespace {

constexpr const char* introduction =
    "Shows and keeps the photo library of this user: the one that applications with photos_kit\n"
    "use. It may be used while they run.";

constexpr const char* lessons = R"(Examples:
  photos-kit import ~/Camera              every picture and video in a folder
  photos-kit list --count 10              the ten newest
  photos-kit export /media/stick --all    copies of everything that is listed
  photos-kit trash list                   what was deleted, and can come back
  photos-kit verify                       whether the library is whole
  photos-kit backup /media/disk/photos    a copy that is a library itself
  photos-kit COMMAND --help               more about one command

Exit codes: 0 done; 1 something failed or was refused; 2 wrong use, nothing was done;
130 stopped by Ctrl-C. The manual: man photos-kit.)";

// What could not be written (a full disk behind a redirection) must not pass for success.
int flushed(int exitCode) {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return exitCode;
    tool::complain("The output could not be written.");
    return exitCode == tool::done ? tool::failed : exitCode;
}

void describe(tool::Tool& tool) {
    tool.app.name("photos-kit");
    tool.app.description(introduction);
    tool.app.footer(lessons);
    tool.app.set_version_flag("--version", "photos-kit " PHOTOS_KIT_VERSION, "Print the version");
    tool.app.require_subcommand(1);
    tool.app.get_formatter()->column_width(28);
    tool::addStatus(tool);
    tool::addImport(tool);
    tool::addList(tool);
    tool::addAlbums(tool);
    tool::addExport(tool);
    tool::addTrash(tool);
    tool::addRevert(tool);
    tool::addAccess(tool);
    tool::addSettings(tool);
    tool::addVerify(tool);
    tool::addRepair(tool);
    tool::addBackup(tool);
    tool::addDoctor(tool);
}

int sayWhatIsWrong(const tool::Tool& tool, const CLI::ParseError& misuse) {
    const std::vector<std::string> notUnderstood = tool.app.remaining(true);
    const std::string why = notUnderstood.empty() ? std::string(misuse.what())
                                                  : "Not understood: " + notUnderstood.front();
    tool::complain(why + ". See photos-kit --help.");
    return tool::wrongUse;
}

int run(tool::Tool& tool, int argc, char** argv) {
    if (argc > 1 && std::string_view(argv[1]) == "complete")
        return tool::complete(tool.app, {argv + 2, argv + argc});
    try {
        tool.app.parse(argc, argv);
    } catch (const CLI::Success& helpOrVersion) {
        return tool.app.exit(helpOrVersion);
    } catch (const CLI::ParseError& misuse) {
        return sayWhatIsWrong(tool, misuse);
    }
    return tool.action();
}

} // namespace

int main(int argc, char** argv) {
    // Widths of characters; everything that is printed is UTF-8.
    std::setlocale(LC_CTYPE, "C.UTF-8");
    try {
        tool::Tool tool;
        describe(tool);
        return flushed(run(tool, argc, argv));
    } catch (const std::exception& failure) {
        // A LibraryError or a Failure: a sentence.
        tool::complain(failure.what());
    }
    return flushed(tool::failed);
}
