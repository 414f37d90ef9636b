#include "bench/bench.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace bench {

namespace {

int aboveLimit = 0;

} // namespace

std::vector<NamedWorkload>& workloads() {
    static std::vector<NamedWorkload> all;
    return all;
}

Registration::Registration(std::string name, std::string description, Workload workload) {
    workloads().push_back({std::move(name), std::move(description), std::move(workload)});
}

double microseconds(const std::function<void()>& work) {
    using namespace std::chrono;
    const auto start = steady_clock::now();
    work();
    return duration<double, std::micro>(steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

Medians alternate(int repeats, const std::function<void()>& ours,
                  const std::function<void()>& floor) {
    ours();
    floor();
    std::vector<double> ourTimes;
    std::vector<double> floorTimes;
    for (int i = 0; i < repeats; ++i) {
        ourTimes.push_back(microseconds(ours));
        floorTimes.push_back(microseconds(floor));
    }
    return {median(ourTimes), median(floorTimes)};
}

void report(const Measurement& m) {
    const double ratio = m.floor > 0 ? m.ours / m.floor : 0;
    const bool above = m.limit > 0 && ratio > m.limit;
    aboveLimit += above;
    std::printf("%-46s %12.1f %s  against %-40s %12.1f %s  ratio %8.4f", m.what.c_str(), m.ours,
                m.unit.c_str(), m.against.c_str(), m.floor, m.unit.c_str(), ratio);
    if (m.limit > 0)
        std::printf("  limit %.4g %s", m.limit, above ? "ABOVE" : "ok");
    std::printf("\n");
    std::fflush(stdout);
}

int linesAboveLimit() {
    return aboveLimit;
}

std::filesystem::path newHome(const Settings& settings, const std::string& name) {
    const auto home = settings.folder / name;
    std::filesystem::remove_all(home);
    std::filesystem::create_directories(home / ".lumatrice" / "logs");
    setenv("HOME", home.c_str(), 1);
    return home;
}

} // namespace bench
