// Exports against cp, their memory, their cancellation, and many at once.
#include "bench/bench.h"
#include "bench/host_jvm.h"
#include "bench/noise_jpeg.h"

#include "bridge/entry_points.h"

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <thread>

namespace bench {

namespace {

constexpr double chunk = 512.0 * 1024; // what a transfer hands over at a time

void require(bool done, const char* what) {
    if (done)
        return;
    std::printf("photos_bench: %s\n", what);
    std::exit(3);
}

// A picture of this many bytes: what stands behind a JPEG's end is no fault of it.
std::string pictureOf(const Settings& settings, std::uintmax_t bytes) {
    const auto small = noiseJpegs(settings.folder / "export-files", 1, 3'000'000)[0];
    const std::string path =
        (settings.folder / "export-files" / (std::to_string(bytes) + ".jpg")).string();
    std::filesystem::copy_file(small, path, std::filesystem::copy_options::overwrite_existing);
    std::ofstream file(path, std::ios::app | std::ios::binary);
    std::mt19937_64 random(bytes);
    std::vector<std::uint64_t> block(1 << 17);
    for (auto size = std::filesystem::file_size(path); size < bytes; size += block.size() * 8) {
        for (auto& word : block)
            word = random();
        file.write(reinterpret_cast<const char*>(block.data()),
                   static_cast<std::streamsize>(block.size() * 8));
    }
    return path;
}

jint exportTo(JNIEnv* env, const std::string& asset, const std::string& path, jint number) {
    env->PushLocalFrame(8);
    const jint result = Java_com_morrowfen_lumatrice_service_PhotosService_nativeExportToFile(
        env, nullptr, env->NewStringUTF(asset.c_str()), env->NewStringUTF(path.c_str()), number);
    env->PopLocalFrame(nullptr);
    return result;
}

void copyWithCp(const std::string& from, const std::string& to) {
    std::filesystem::remove(to);
    const char* const arguments[] = {"cp", "--reflink=never", from.c_str(), to.c_str(), nullptr};
    pid_t child = 0;
    int status = 1;
    require(posix_spawnp(&child, "cp", nullptr, nullptr, const_cast<char* const*>(arguments),
                         environ) == 0 &&
                waitpid(child, &status, 0) == child && status == 0,
            "cp failed");
}

double processorTime(int who) {
    rusage used{};
    getrusage(who, &used);
    return static_cast<double>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) * 1e6 +
           static_cast<double>(used.ru_utime.tv_usec + used.ru_stime.tv_usec);
}

void againstCp(const Settings& settings, const std::string& picture, const std::string& asset,
               int megabytes) {
    const std::string ours = (settings.folder / "exported").string();
    const std::string peer = (settings.folder / "copied").string();
    std::vector<double> ourProcessor;
    std::vector<double> peerProcessor;
    const Medians m = alternate(
        settings.smoke    ? 2
        : megabytes > 100 ? 9
                          : 31,
        [&] {
            const double before = processorTime(RUSAGE_SELF);
            require(exportTo(jvm(), asset, ours, 1) == 0, "an export failed");
            ourProcessor.push_back(processorTime(RUSAGE_SELF) - before);
        },
        [&] {
            const double before = processorTime(RUSAGE_CHILDREN);
            copyWithCp(picture, peer);
            peerProcessor.push_back(processorTime(RUSAGE_CHILDREN) - before);
        });
    const std::string what = "export of " + std::to_string(megabytes) + " MB";
    report({what + ", wall", "cp --reflink=never", m.ours, m.floor, 1.15});
    report({what + ", processor", "cp --reflink=never", median(ourProcessor), median(peerProcessor),
            1.15});
}

// The most memory that this process had since the last call, in KiB.
long peakMemory() {
    long peak = 0;
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:"))
            peak = std::strtol(line.c_str() + 6, nullptr, 10);
    }
    std::ofstream("/proc/self/clear_refs") << "5";
    return peak;
}

void memory(const Settings& settings, const std::string& small, const std::string& large) {
    const std::string target = (settings.folder / "exported").string();
    const auto peakOf = [&](const std::string& asset) {
        peakMemory();
        require(exportTo(jvm(), asset, target, 1) == 0, "an export failed");
        return static_cast<double>(peakMemory());
    };
    const double ofSmall = peakOf(small);
    const double more = peakOf(large) - ofSmall;
    report({"more memory for the large export", "8 MiB", std::max(more, 1.0), 8192, 1, "KiB"});
}

void cancelling(const Settings& settings, const std::string& asset, double megabytes) {
    const std::string target = (settings.folder / "exported").string();
    std::vector<double> wholes;
    for (int i = 0; i < 5; ++i)
        wholes.push_back(microseconds([&] { exportTo(jvm(), asset, target, 1); }));
    const double whole = median(wholes);
    const double twoChunks = 2 * whole / (megabytes * 1e6 / chunk);
    std::vector<double> waits;
    for (int i = 0; i < (settings.smoke ? 2 : 15); ++i) {
        std::atomic<std::chrono::steady_clock::time_point> cancelled;
        std::thread canceller([&] {
            std::this_thread::sleep_for(
                std::chrono::microseconds(static_cast<long>(whole * (0.1 + 0.02 * i))));
            cancelled = std::chrono::steady_clock::now();
            Java_com_morrowfen_lumatrice_service_PhotosService_nativeCancelExport(nullptr, nullptr,
                                                                                  7);
        });
        const jint result = exportTo(jvm(), asset, target, 7);
        const auto returned = std::chrono::steady_clock::now();
        canceller.join();
        if (result == -4)
            waits.push_back(
                std::chrono::duration<double, std::micro>(returned - cancelled.load()).count());
    }
    require(settings.smoke || waits.size() > 5, "no export was cancelled in time");
    if (!waits.empty())
        report({"from cancelling to return", "two chunks", median(waits), twoChunks,
                settings.smoke ? 0.0 : 1.0});
}

void manyAtOnce(const Settings& settings) {
    const int files = settings.smoke ? 8 : 200;
    const auto paths = noiseJpegs(settings.folder / "import-files", files, 3'000'000);
    const std::vector<std::string> assets = importFiles(paths);
    const auto folder = settings.folder / "many";
    std::filesystem::create_directories(folder);
    const auto target = [&](int i) { return (folder / std::to_string(i)).string(); };
    JavaVM* machine = nullptr;
    jvm()->GetJavaVM(&machine);
    const auto parallel = [&] {
        std::atomic<int> next = 0;
        std::vector<std::thread> threads;
        for (int t = 0; t < 16; ++t)
            threads.emplace_back([&] {
                void* env = nullptr;
                machine->AttachCurrentThread(&env, nullptr);
                for (int i = next++; i < files; i = next++)
                    require(exportTo(static_cast<JNIEnv*>(env), assets[static_cast<std::size_t>(i)],
                                     target(i), i) == 0,
                            "an export failed");
                machine->DetachCurrentThread();
            });
        for (auto& thread : threads)
            thread.join();
    };
    const auto inSequence = [&] {
        for (int i = 0; i < files; ++i)
            require(exportTo(jvm(), assets[static_cast<std::size_t>(i)], target(i), i) == 0,
                    "an export failed");
    };
    const Medians m = alternate(settings.smoke ? 1 : 7, parallel, inSequence);
    report({std::to_string(files) + " exports of 3 MB from 16 threads", "one after the other",
            m.ours, m.floor, 1.0});
}

void exporting(const Settings& settings) {
    newHome(settings, "export-home");
    const int sizes[] = {settings.smoke ? 4 : 50, settings.smoke ? 8 : 500};
    std::vector<std::string> assets;
    for (const int megabytes : sizes) {
        const std::string picture =
            pictureOf(settings, static_cast<std::uintmax_t>(megabytes) * 1'000'000);
        assets.push_back(importFiles({picture})[0]);
        againstCp(settings, picture, assets.back(), megabytes);
    }
    memory(settings, assets[0], assets[1]);
    const int inFlight = settings.smoke ? 8 : 1000;
    const std::string huge =
        importFiles({pictureOf(settings, static_cast<std::uintmax_t>(inFlight) * 1'000'000)})[0];
    cancelling(settings, huge, inFlight);
    manyAtOnce(settings);
    for (const char* left : {"exported", "copied", "many", "export-files", "export-home"})
        std::filesystem::remove_all(settings.folder / left);
}

const Registration registration("export", "exports against cp, cancelled, and many at once",
                                exporting);

} // namespace

} // namespace bench
