// Lets every file operation of the embedded library fail, and kills the process there; prints what
// came of it as a table, method by method.
#include "tests/faults/sweep.h"

#include <CLI/CLI.hpp>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <fcntl.h>

namespace {

using namespace faults;

struct Row {
    Tally tally;
    double seconds = 0;
    bool swept = false;
};

// Shared by the processes that sweep.
struct Board {
    std::atomic<std::size_t> next = 0;
    std::array<Row, 64> rows{};
};

void work(Board& board, const std::filesystem::path& folder, const std::vector<Method>& methods,
          const SweepOptions& options) {
    Workplace workplace(folder);
    for (std::size_t i = 0; (i = board.next++) < methods.size();) {
        const auto start = std::chrono::steady_clock::now();
        board.rows[i].tally = sweep(workplace, methods[i], options);
        board.rows[i].seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        board.rows[i].swept = true;
        if (options.verbose)
            std::printf("%s done: %lu runs in %.1f s, %lu bad\n", methods[i].name.c_str(),
                        board.rows[i].tally.runs, board.rows[i].seconds, board.rows[i].tally.bad);
        std::fflush(stdout);
    }
}

void add(Tally& sum, const Tally& tally) {
    sum.operations += tally.operations;
    sum.runs += tally.runs;
    sum.recoveries += tally.recoveries;
    sum.oldState += tally.oldState;
    sum.betweenStates += tally.betweenStates;
    sum.newState += tally.newState;
    sum.successes += tally.successes;
    sum.failures += tally.failures;
    sum.killed += tally.killed;
    sum.newThoughFailure += tally.newThoughFailure;
    sum.bad += tally.bad;
}

void printRow(const std::string& name, const Tally& tally, bool markdown) {
    const char* const format =
        markdown ? "| %s | %lu | %lu | %lu | %lu | %lu | %lu | %lu | %lu | %lu | %lu | %lu |\n"
                 : "%-23s %5lu %7lu %7lu %7lu %6lu %7lu %7lu %7lu %7lu %6lu %5lu\n";
    std::printf(format, name.c_str(), tally.operations, tally.runs, tally.recoveries,
                tally.oldState, tally.betweenStates, tally.newState, tally.successes,
                tally.failures, tally.killed, tally.newThoughFailure, tally.bad);
}

void printHeader(bool markdown) {
    if (markdown)
        std::puts("| method | operations | runs | of them in recovery | old | between | new | "
                  "success | failure | killed | failure, yet new | bad |\n"
                  "|---|--:|--:|--:|--:|--:|--:|--:|--:|--:|--:|--:|");
    else
        std::printf("%-23s %5s %7s %7s %7s %6s %7s %7s %7s %7s %6s %5s\n", "method", "ops", "runs",
                    "recov.", "old", "betw.", "new", "success", "failure", "killed", "f.new",
                    "bad");
}

std::vector<Method> chosen(const std::vector<std::string>& names) {
    std::vector<Method> methods;
    for (const Method& method : allMethods()) {
        if (names.empty() || std::find(names.begin(), names.end(), method.name) != names.end())
            methods.push_back(method);
    }
    return methods;
}

// Whether all was swept and nothing bad found.
bool print(const Board& board, const std::vector<Method>& methods, bool markdown) {
    Tally sum;
    bool complete = true;
    printHeader(markdown);
    for (std::size_t i = 0; i < methods.size(); ++i) {
        printRow(methods[i].name, board.rows[i].tally, markdown);
        add(sum, board.rows[i].tally);
        complete = complete && board.rows[i].swept;
    }
    printRow("all", sum, markdown);
    if (!complete)
        std::puts("a process that swept ended early");
    return complete && sum.bad == 0 && sum.runs > 0;
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
    bool markdown = false;
    app.add_flag("--short", options.brief, "Only some points of each method");
    app.add_option("--only", only, "These methods");
    app.add_option("--kind", kind, "This kind of fault");
    app.add_option("--point", options.onlyPoint, "This operation, counted from 1");
    app.add_option("--seed", options.seed, "What is torn, and which points --short takes");
    app.add_option("--folder", folder, "Where the libraries are made")->capture_default_str();
    app.add_option("--jobs", jobs, "Processes that sweep")->capture_default_str();
    app.add_flag("--markdown", markdown, "The table for a document");
    app.add_flag("--verbose", options.verbose, "Calls of each function, and more");
    CLI11_PARSE(app, count, arguments);
    for (const Kind known : allKinds) {
        if (nameOf(known) == kind)
            options.onlyKind = known;
    }
    const std::vector<Method> methods = chosen(only);
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
    const bool good = print(*board, methods, markdown);
    std::filesystem::remove_all(base);
    return good ? 0 : 1;
}
