// Lets every file operation of the embedded library fail, and kills the process there; prints what
// came of it as a table, method by method.
#include "tests/faults/fault_plan.h"
#include "tests/faults/sweep.h"
#include "tests/support/home.h"

#include <CLI/CLI.hpp>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>

namespace {

using namespace faults;

using Sum = std::array<std::atomic<std::uint64_t>, columns>;

void printRow(const std::string& name, const auto& tally) {
    std::string row = "| " + name + " |";
    for (const std::uint64_t number : tally)
        row += " " + std::to_string(number) + " |";
    std::puts(row.c_str());
}

// In a process of its own; false when something bad was found.
bool sweepBelow(const fs::path& folder, const Method& method, const SweepOptions& options,
                Sum& sum) {
    fs::create_directory(folder);
    setenv("HOME", (folder / "home").c_str(), 1);
    setenv("TZ", "UTC", 1);
    const Tally tally = sweep(method, options);
    printRow(method.name, tally);
    for (std::size_t column = 0; column < columns; ++column)
        sum.at(column) += tally.at(column);
    fs::remove_all(folder);
    return tally[bad] == 0;
}

// At most so many methods at the same time.
bool sweepAll(const std::vector<Method>& methods, const SweepOptions& options,
              const fs::path& folder, unsigned jobs) {
    auto* const sum =
        new (mmap(nullptr, sizeof(Sum), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))
            Sum{};
    const support::ScratchHome base(fs::canonical(folder));
    bool good = true;
    unsigned running = 0;
    for (std::size_t i = 0; i < methods.size() || running > 0;) {
        int status = 0;
        if (running == jobs || i == methods.size()) {
            wait(&status);
            --running;
        } else if (fork() == 0) {
            _exit(sweepBelow(base / methods[i].name, methods[i], options, *sum) ? 0 : 1);
        } else {
            ++running;
            ++i;
        }
        good = good && status == 0;
    }
    printRow("all", *sum);
    return good;
}

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): an exception ends the program, as it should
int main(int count, char** arguments) {
    CLI::App app{"Fails and kills the embedded library at every file operation."};
    std::vector<Method> methods = allMethods();
    std::vector<std::string> known, knownKinds, only;
    for (const Method& method : methods)
        known.push_back(method.name);
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
    app.add_option("--jobs", jobs, "Methods swept at the same time")->capture_default_str();
    CLI11_PARSE(app, count, arguments);
    std::erase_if(methods, [&](const Method& method) {
        return !only.empty() && std::ranges::find(only, method.name) == only.end();
    });
    std::setvbuf(stdout, nullptr, _IOLBF, 0); // processes print whole lines, each of them once
    std::puts("| method | operations | runs | of them in recovery | old | between | new | failure, "
              "yet new | bad |\n|---|--:|--:|--:|--:|--:|--:|--:|--:|");
    return sweepAll(methods, options, folder, jobs) ? 0 : 1;
}
