#include "bench/other_process.h"

#include <sqlite3.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace bench {

namespace {

constexpr std::size_t longestRequest = 16 << 10;
int channel = -1;

// One request: the catalogue's path, a NUL, the statements, a NUL.
char serve(const char* request) {
    const std::string path = request;
    const char* sql = request + path.size() + 1;
    sqlite3* database = nullptr;
    char* message = nullptr;
    bool done =
        sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK;
    sqlite3_busy_timeout(database, 60'000);
    done = done && sqlite3_exec(database, sql, nullptr, nullptr, &message) == SQLITE_OK;
    if (!done)
        std::fprintf(stderr, "photos_bench: %s: %s\n", path.c_str(),
                     message ? message : sqlite3_errmsg(database));
    sqlite3_close(database);
    return done ? 1 : 0;
}

} // namespace

void startOtherProcess() {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0)
        std::abort();
    if (fork() != 0) {
        close(ends[1]);
        channel = ends[0];
        return;
    }
    close(ends[0]);
    std::vector<char> request(longestRequest + 1);
    while (read(ends[1], request.data(), longestRequest) > 0) {
        const char answer = serve(request.data());
        if (write(ends[1], &answer, 1) != 1)
            break;
    }
    _exit(0);
}

void runElsewhere(const std::filesystem::path& catalogue, const std::string& sql) {
    std::string request = catalogue.string();
    request.push_back('\0');
    request += sql;
    request.push_back('\0');
    char answer = 0;
    if (write(channel, request.data(), request.size()) < 0 || read(channel, &answer, 1) != 1 ||
        answer != 1) {
        std::printf("photos_bench: a change in the other process failed\n");
        std::fflush(stdout);
        _exit(3);
    }
}

std::filesystem::path copyElsewhere(const std::filesystem::path& catalogue,
                                    const std::string& name) {
    const auto copy = catalogue.parent_path() / name;
    for (const char* ending : {"", "-wal", "-shm"})
        std::filesystem::remove(copy.string() + ending);
    runElsewhere(catalogue, "VACUUM INTO '" + copy.string() + "'");
    runElsewhere(copy, "PRAGMA journal_mode=WAL");
    return copy;
}

} // namespace bench
