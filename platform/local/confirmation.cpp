#include "platform/local/confirmation.h"

#include "platform/local/library_error.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>

namespace local {

namespace {

constexpr int accepted = 0;
constexpr int refused = 1;

// The host's blocked and ignored signals are not the dialog's business, and the dialog writes
// nothing to the host's output.
int runDialog(const std::string& question) {
    const std::string text = "--text=" + question;
    const char* const arguments[] = {
        "zenity",     "--question",        "--title=Photo Library", "--no-markup",
        text.c_str(), "--ok-label=Delete", "--cancel-label=Keep",   nullptr};
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&files);
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    pid_t dialog = 0;
    const int failure = posix_spawnp(&dialog, "zenity", &files, &attributes,
                                     const_cast<char* const*>(arguments), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    if (failure != 0)
        throw systemError("Nobody could be asked about the deletion (zenity)", failure);
    int status = 0;
    while (waitpid(dialog, &status, 0) < 0) {
        if (errno != EINTR)
            throw systemError("The answer about the deletion was lost", errno);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

void confirmDeletion(CatalogueConnection& connection, std::size_t assets) {
    if (connection.integer("SELECT confirm_deletions FROM library") == 0)
        return;
    const std::string what =
        assets == 1 ? "this item" : "these " + std::to_string(assets) + " items";
    const int answer = runDialog("Delete " + what +
                                 "? Deleted items stay in the library's trash for 30 days and can "
                                 "be restored.");
    if (answer == accepted)
        return;
    if (answer == refused)
        throw LibraryError(platform::PHPhotosErrorDomain, platform::PHPhotosErrorUserCancelled,
                           "The deletion was refused.");
    throw LibraryError(platform::PHPhotosErrorDomain, 0,
                       "Nobody could be asked about the deletion; nothing was deleted.");
}

} // namespace local
