// Lets every file operation of the embedded library fail, and kills the process there; prints what
// came of it as a table, method by method.
#include "tests/faults/run.h"

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
    std::array<bool, 64> swept{};
};

void work(Board& board, const std::filesystem::path& folder, const std::vector<Method>& methods,
          const SweepOptions& options) {
    Workplace workplace(folder);
    for (std::size_t i = 0; (i = board.next++) < methods.size();) {
        board.tallies.at(i) = sweep(workplace, methods[i], options);
        board.swept.at(i) = true;
    }
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
    bool complete = true;
    std::puts(
        "| method | operations | runs | of them in recovery | old | between | new | success | "
        "failure | killed | failure, yet new | bad |\n"
        "|---|--:|--:|--:|--:|--:|--:|--:|--:|--:|--:|--:|");
    for (std::size_t i = 0; i < methods.size(); ++i) {
        printRow(methods[i].name, board.tallies.at(i));
        for (std::size_t column = 0; column < sum.size(); ++column)
            sum.at(column) += board.tallies.at(i).at(column);
        complete = complete && board.swept.at(i);
    }
    printRow("all", sum);
    if (!complete)
        std::puts("a process that swept ended early");
    return complete && sum[bad] == 0 && sum[runs] > 0;
}

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): an exception ends the program, as it should
int main(int count, char** arguments) {
    CLI::App app{"Fails and kills the embedded library at every file operation."};
    SweepOptions options;
    std::vector<std::string> only;
    std::string kind;
    std::filesystem::path folder = "/dev/shm";
    unsigned jobs = 2;
    app.add_flag("--short", options.brief, "Only some points of each method");
    app.add_option("--only", only, "These methods");
    app.add_option("--kind", kind, "This kind of fault");
    app.add_option("--point", options.onlyPoint, "This operation, counted from 1");
    app.add_option("--seed", options.seed, "What is torn, and which points --short takes");
    app.add_option("--folder", folder, "Where the libraries are made")->capture_default_str();
    app.add_option("--jobs", jobs, "Processes that sweep")->capture_default_str();
    CLI11_PARSE(app, count, arguments);
    for (const Kind known : allKinds) {
        if (nameOf(known) == kind)
            options.onlyKind = known;
    }
    std::vector<Method> methods = allMethods();
    std::erase_if(methods, [&](const Method& method) {
        return !only.empty() && std::find(only.begin(), only.end(), method.name) == only.end();
    });
    if (methods.empty() || (!kind.empty() && !options.onlyKind)) {
        std::fputs("There is no such method or kind.\n", stderr);
        return 2;
    }
    auto* const board = new (mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE,
                                  MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Board;
    std::string base = (folder / "photos-kit-faults-XXXXXX").string();
    if (!mkdtemp(base.data()))
        return 2;
    for (unsigned job = 0; job < jobs; ++job) {
        if (fork() == 0) {
            work(*board, base + "/" + std::to_string(job), methods, options);
            std::fflush(stdout);
            _exit(0);
        }
    }
    while (wait(nullptr) > 0) {
    }
    const bool good = print(*board, methods);
    std::filesystem::remove_all(base);
    return good ? 0 : 1;
}
