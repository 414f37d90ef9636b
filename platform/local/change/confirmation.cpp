#include "platform/local/change/confirmation.h"

#include "platform/local/system/library_error.h"
#include "platform/local/system/unique_fd.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <sstream>
#include <string>

namespace local {

namespace {

constexpr int accepted = 0;
constexpr int answeredNo = 1;
constexpr int answerDescriptor = 3; // that the shell writes to

// A shell runs the dialog and writes its exit code to a pipe: where the host ignores SIGCHLD, or
// waits for all of its children, waitpid would tell nothing here.
constexpr const char* dialogAndAnswer = "zenity \"$@\" 3>&-; echo $? >&3";

struct SpawnSettings {
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;

    // The host's blocked and ignored signals are not the dialog's business, and the dialog writes
    // nothing to the host's output.
    explicit SpawnSettings(int answer) {
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_adddup2(&files, answer, answerDescriptor);
        posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawnattr_init(&attributes);
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setsigdefault(&attributes, &all);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;
    ~SpawnSettings() {
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&files);
    }
};

// The number in the one line that the shell writes; -1 when it ended without.
int readAnswer(int pipe) {
    std::string line;
    while (!line.ends_with('\n')) {
        char byte = 0;
        const ssize_t got = read(pipe, &byte, 1);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            throw systemError("The answer about the deletion was lost", errno);
        if (got == 0)
            return -1;
        line += byte;
    }
    int answer = -1;
    std::from_chars(line.data(), line.data() + line.size(), answer);
    return answer;
}

int runDialog(const std::string& question) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw systemError("Nobody could be asked about the deletion", errno);
    const UniqueFd answer(ends[0]);
    UniqueFd answering(ends[1]);
    const std::string text = "--text=" + question;
    const char* const arguments[] = {"sh",
                                     "-c",
                                     dialogAndAnswer,
                                     "sh",
                                     "--question",
                                     "--title=Photo Library",
                                     "--no-markup",
                                     text.c_str(),
                                     "--ok-label=Delete",
                                     "--cancel-label=Keep",
                                     nullptr};
    const SpawnSettings settings(answering.get());
    pid_t shell = 0;
    const int failure = posix_spawn(&shell, "/bin/sh", &settings.files, &settings.attributes,
                                    const_cast<char* const*>(arguments), environ);
    if (failure != 0)
        throw systemError("Nobody could be asked about the deletion", failure);
    answering.reset();
    const int given = readAnswer(answer.get());
    while (waitpid(shell, nullptr, 0) < 0 && errno == EINTR) {
    }
    return given;
}

} // namespace

bool canAskAboutDeletions() {
    const char* const path = std::getenv("PATH");
    std::istringstream folders(path ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');) {
        const std::string program = (folder.empty() ? "." : folder) + "/zenity";
        struct stat file = {};
        if (stat(program.c_str(), &file) == 0 && S_ISREG(file.st_mode) &&
            access(program.c_str(), X_OK) == 0)
            return true;
    }
    return false;
}

void confirmDeletion(CatalogueConnection& connection, std::size_t assets) {
    if (connection.integer("SELECT confirm_deletions FROM library") == 0)
        return;
    const std::string what =
        assets == 1 ? "this item" : "these " + std::to_string(assets) + " items";
    const int answer = runDialog("Delete " + what +
                                 "? Deleted items stay in the library's trash, and can be "
                                 "restored, until somebody empties it.");
    if (answer == accepted)
        return;
    if (answer == answeredNo)
        throw LibraryError(platform::PHPhotosErrorDomain, platform::PHPhotosErrorUserCancelled,
                           "The deletion was refused.");
    throw LibraryError(platform::PHPhotosErrorDomain, 0,
                       "Nobody could be asked about the deletion; nothing was deleted.");
}

} // namespace local
