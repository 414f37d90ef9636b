// Durable import of files, against the least that makes a copy durable.
#include "bench/bench.h"
#include "bench/host_jvm.h"
#include "bench/noise_jpeg.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace bench {

namespace {

constexpr std::size_t copyBuffer = 1 << 20;

void require(bool done) {
    if (done)
        return;
    std::printf("photos_bench: the floor's copy failed\n");
    std::exit(3);
}

// The floor: copy, sync the data, rename, sync the folder.
void copyDurably(const std::string& from, const std::filesystem::path& folder, int number) {
    static std::vector<char> buffer(copyBuffer);
    const std::string part = (folder / "part").string();
    const std::string final = (folder / std::to_string(number)).string();
    const int in = open(from.c_str(), O_RDONLY);
    const int out = open(part.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600);
    require(in >= 0 && out >= 0);
    for (ssize_t got = 0; (got = read(in, buffer.data(), buffer.size())) > 0;)
        require(write(out, buffer.data(), static_cast<std::size_t>(got)) == got);
    require(fdatasync(out) == 0);
    close(in);
    close(out);
    require(rename(part.c_str(), final.c_str()) == 0);
    const int directory = open(folder.c_str(), O_RDONLY | O_DIRECTORY);
    require(fsync(directory) == 0);
    close(directory);
}

void import(const Settings& settings) {
    const auto home = newHome(settings, "import-home");
    const auto files = noiseJpegs(settings.folder / "import-files", settings.files, 3'000'000);
    const auto floorFolder = home / "floor";
    std::filesystem::create_directories(floorFolder);
    int turn = 0;
    int number = 0;
    const Medians m = alternate(
        settings.files - 1,
        [&] {
            if (importFiles({files[static_cast<std::size_t>(turn++)]})[0].empty()) {
                std::printf("photos_bench: an import failed\n");
                std::exit(3);
            }
        },
        [&] {
            copyDurably(files[static_cast<std::size_t>(number)], floorFolder, number);
            ++number;
        });
    report({"import of a 3 MB JPEG", "copy + fdatasync + folder sync", m.ours, m.floor, 1.25});
    std::filesystem::remove_all(home);
}

const Registration registration("import", "durable import of 3 MB files", import);

} // namespace

} // namespace bench
