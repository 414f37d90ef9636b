#include "tool/library_users.h"

#include "tool/output.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <optional>

namespace tool {

namespace {

// Nothing when it does not end well.
std::optional<std::string> outputOf(const char* command) {
    std::string output;
    std::array<char, 4096> part{};
    FILE* const program = popen(command, "re");
    if (!program)
        return std::nullopt;
    for (std::size_t got = 0; (got = fread(part.data(), 1, part.size(), program)) > 0;)
        output.append(part.data(), got);
    return pclose(program) == 0 ? std::optional(output) : std::nullopt;
}

} // namespace

std::map<long, LibraryUser> usersOf(const std::string& library) {
    std::error_code error;
    const std::string inside = std::filesystem::weakly_canonical(library, error).string() + "/";
    const auto output =
        outputOf("LC_ALL=C exec lslocks --json --notruncate --output PID,COMMAND,PATH,MODE 2>&-");
    if (!output)
        throw Failure("Who has the library open cannot be told: lslocks does not run.");
    std::map<long, LibraryUser> users;
    if (output->empty()) // nobody holds any lock
        return users;
    const Json all = Json::parse(*output);
    for (const Json& lock : all.at("locks")) {
        const std::string path = lock["path"].is_string() ? lock["path"].get<std::string>() : "";
        const long process = lock["pid"].get<long>();
        if (!path.starts_with(inside) || process == getpid())
            continue;
        LibraryUser& user = users[process];
        user.program = lock["command"].is_string() ? lock["command"].get<std::string>() : "?";
        user.files += path.starts_with(inside + "incoming/") ? 1 : 0;
        user.writes |= path == inside + "library.db-shm" && lock["mode"] == "WRITE";
    }
    return users;
}

} // namespace tool
