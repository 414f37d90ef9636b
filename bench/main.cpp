// photos_bench: named workloads, each beside its floor or peer.
#include "bench/bench.h"
#include "bench/other_process.h"

#include <CLI/CLI.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

int main(int argc, char** argv) {
    bench::Settings settings;
    settings.folder = std::filesystem::temp_directory_path() / "photos-kit-bench";
    std::vector<std::string> only;
    bool list = false;
    bool strict = false;

    CLI::App app("Measures photos_kit against floors and peers in the same run.");
    app.add_option("--only", only, "Names of the workloads to run (default: all)");
    app.add_flag("--list", list, "List the workloads");
    app.add_option("--assets", settings.assets, "Assets in the catalogue")->capture_default_str();
    app.add_option("--files", settings.files, "Files to import")->capture_default_str();
    app.add_option("--repeats", settings.repeats, "Measurements of a short operation")
        ->capture_default_str();
    app.add_option("--thumbnails", settings.thumbnails, "Thumbnails of the memory workload")
        ->capture_default_str();
    app.add_option("--folder", settings.folder, "Where homes and pictures are made")
        ->capture_default_str();
    app.add_flag("--smoke", settings.smoke, "Tiny sizes: tries the machinery, measures nothing");
    app.add_flag("--strict", strict, "Exit with 1 when a ratio is above its limit");
    CLI11_PARSE(app, argc, argv);

    if (settings.smoke) {
        settings.assets = 5000;
        settings.files = 3;
        settings.repeats = 3;
        settings.thumbnails = 20;
    }
    if (list) {
        for (const auto& workload : bench::workloads())
            std::printf("%-22s %s\n", workload.name.c_str(), workload.description.c_str());
        return 0;
    }
    for (const std::string& name : only) {
        const auto& all = bench::workloads();
        if (std::none_of(all.begin(), all.end(), [&](const auto& w) { return w.name == name; })) {
            std::fprintf(stderr, "photos_bench: no workload is called %s\n", name.c_str());
            return 2;
        }
    }
    std::filesystem::create_directories(settings.folder);
    bench::startOtherProcess();
    // The diagnostic lines go to the log file; on the terminal they would drown the table.
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDERR_FILENO);
    for (const auto& workload : bench::workloads()) {
        const bool wanted =
            only.empty() || std::find(only.begin(), only.end(), workload.name) != only.end();
        if (wanted)
            workload.workload(settings);
    }
    std::printf("%d line(s) above the limit%s\n", bench::linesAboveLimit(),
                settings.smoke ? " (smoke sizes: the ratios mean nothing)" : "");
    std::fflush(stdout);
    _exit(strict && bench::linesAboveLimit() > 0 ? 1 : 0);
}
