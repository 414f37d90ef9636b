// Lets every file operation of the embedded library fail, and kills the process there; prints what
// came of it as a table, method by method.
#include "tests/faults/run.h"
#include "tests/support/home.h"

#include <CLI/CLI.hpp>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>

namespace {

using namespace faults;

// Shared by the processes that sweep.
struct Board {
    std::atomic<std::size_t> next = 0;
    std::array<Tally, 64> tallies{};
};

void work(Board& board, const fs::path& folder, const std::vector<Method>& methods,
          const SweepOptions& options) {
    fs::create_directory(folder);
    setenv("HOME", (folder / "home").c_str(), 1);
    setenv("TZ", "UTC", 1);
    for (std::size_t i = 0; (i = board.next++) < methods.size();)
        board.tallies.at(i) = sweep(methods[i], options);
    std::fflush(stdout);
}

void printRow(const std::string& name, const Tally& tally) {
    std::printf("| %s |", name.c_str());
    for (const std::uint64_t number : tally)
        std::printf(" %lu |", number);
    std::puts("");
}

// Whether all was swept and nothing bad found.
bool print(const Board& board, const std::vector<Method>& methods) {
    Tally sum{};
    bool good = true;
    std::puts(
        "| method | operations | runs | of them in recovery | old | between | new | success | "
        "failure | killed | failure, yet new | bad |\n"
        "|---|--:|--:|--:|--:|--:|--:|--:|--:|--:|--:|--:|");
    for (std::size_t i = 0; i < methods.size(); ++i) {
        const Tally& tally = board.tallies.at(i);
        printRow(methods[i].name, tally);
        for (std::size_t column = 0; column < sum.size(); ++column)
            sum.at(column) += tally.at(column);
        if (tally[runs] == 0)
            std::puts("the process that swept it ended early");
        good = good && tally[runs] > 0 && tally[bad] == 0;
    }
    printRow("all", sum);
    return good;
}

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): an exception ends the program, as it should
int main(int count, char** arguments) {
    CLI::App app{"Fails and kills the embedded library at every file operation."};
    std::vector<Method> methods = allMethods();
    std::vector<std::string> known, only;
    for (const Method& method : methods)
        known.push_back(method.name);
    std::vector<std::string> knownKinds;
    for (const Kind& kind : kinds)
        knownKinds.emplace_back(kind.name);
    SweepOptions options;
    fs::path folder = "/dev/shm";
    unsigned jobs = 2;
    app.add_flag("--short", options.brief, "Only some points of each method");
    app.add_option("--only", only, "These methods")->check(CLI::IsMember(known));
    app.add_option("--kind", options.kind, "This kind of fault")->check(CLI::IsMember(knownKinds));
    app.add_option("--point", options.point, "This operation, counted from 1");
    app.add_option("--seed", options.seed, "What is torn, and which points --short takes");
    app.add_option("--folder", folder, "Where the libraries are made")->capture_default_str();
    app.add_option("--jobs", jobs, "Processes that sweep")->capture_default_str();
    CLI11_PARSE(app, count, arguments);
    std::erase_if(methods, [&](const Method& method) {
        return !only.empty() && std::ranges::find(only, method.name) == only.end();
    });
    auto* const board = new (mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE,
                                  MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Board;
    const support::ScratchHome base(fs::canonical(folder));
    for (unsigned job = 0; job < jobs; ++job) {
        if (fork() == 0) {
            work(*board, base / std::to_string(job), methods, options);
            _exit(0);
        }
    }
    while (wait(nullptr) > 0) {
    }
    return print(*board, methods) ? 0 : 1;
}
