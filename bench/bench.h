// What the workloads share: how they are named, measured and reported.
//
// A workload measures the product and, in the same run and alternating with it, a floor or a
// peer; what it reports is their ratio. Seconds do not travel between machines; ratios do.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace bench {

struct Settings {
    int assets = 1'000'000;       // rows in the catalogue of the listing workloads
    int files = 200;              // files to import
    int repeats = 200;            // measurements of a short operation
    int thumbnails = 10'000;      // of the memory workload
    bool smoke = false;           // sizes so small that only the machinery is tried
    std::filesystem::path folder; // for homes and pictures
};

// One line of the table. `limit` is what the ratio is meant to stay below; 0: none.
struct Measurement {
    std::string what;
    std::string against;
    double ours = 0; // microseconds, or what `unit` says
    double floor = 0;
    double limit = 0;
    std::string unit = "us";
};

void report(const Measurement& measurement);

// Lines so far whose ratio is above its limit.
int linesAboveLimit();

using Workload = std::function<void(const Settings&)>;

// Enters a workload into the program's list, as a file-scope object.
struct Registration {
    Registration(std::string name, std::string description, Workload workload);
};

struct NamedWorkload {
    std::string name;
    std::string description;
    Workload workload;
};
std::vector<NamedWorkload>& workloads();

double microseconds(const std::function<void()>& work);
double median(std::vector<double> values);

// Medians of `ours` and `floor`, run in turn so that a busy machine is busy for both. One turn of
// each is run first and not counted.
struct Medians {
    double ours = 0;
    double floor = 0;
};
Medians alternate(int repeats, const std::function<void()>& ours,
                  const std::function<void()>& floor);

// A new home folder with a log folder in it, made HOME.
std::filesystem::path newHome(const Settings& settings, const std::string& name);

} // namespace bench
