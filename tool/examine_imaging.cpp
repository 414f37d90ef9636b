// photos-kit doctor: the imaging process, tried with a small file of each kind.
#include "platform/local/imaging/imaging.h"
#include "platform/local/imaging/program_path.h"
#include "tool/examination.h"
#include "tool/sample.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <sstream>

namespace tool {

namespace {

namespace fs = std::filesystem;

struct Output {
    std::string text;
    bool succeeded = false;
};

// What the imaging process prints when it is started so.
Output imagingProcess(const char* option, char* const* environment) {
    const std::string path = local::imaging::programPath();
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        return {};
    const local::UniqueFd from(ends[0]);
    local::UniqueFd to(ends[1]);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, to.get(), STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    const std::array arguments{const_cast<char*>(path.c_str()), const_cast<char*>(option),
                               static_cast<char*>(nullptr)};
    pid_t process = 0;
    const bool started =
        posix_spawn(&process, path.c_str(), &actions, nullptr, arguments.data(), environment) == 0;
    posix_spawn_file_actions_destroy(&actions);
    to.reset();
    if (!started)
        return {};
    Output output;
    std::array<char, 4096> chunk{};
    for (ssize_t got = 0; (got = read(from.get(), chunk.data(), chunk.size())) > 0;)
        output.text.append(chunk.data(), static_cast<std::size_t>(got));
    int status = 0;
    waitpid(process, &status, 0);
    output.succeeded = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return output;
}

// The decoders' libraries; the names of their files tell their versions. A line of the dynamic
// linker's is: name => path (address).
void addLibraries(Section& section) {
    char trace[] = "LD_TRACE_LOADED_OBJECTS=1";
    const std::array environment{static_cast<char*>(trace), static_cast<char*>(nullptr)};
    std::istringstream lines(imagingProcess("", environment.data()).text);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string name, arrow, path;
        words >> name >> arrow >> path;
        for (const std::string wanted : {"libvips", "libjpeg", "libpng16", "libwebp", "libtiff",
                                         "libraw", "libavcodec", "libavformat"}) {
            if (!name.starts_with(wanted + ".so."))
                continue;
            std::error_code error;
            const std::string file = fs::canonical(path, error).filename().string();
            section.add(wanted, wanted, file.substr(std::min(file.size(), wanted.size() + 4)));
        }
    }
}

local::UniqueFd fileOf(const Sample& sample) {
    const local::UniqueFd memory(memfd_create("sample", MFD_CLOEXEC));
    if (!memory || write(memory.get(), sample.bytes.data(), sample.bytes.size()) < 0)
        return {};
    return local::UniqueFd(
        open(("/proc/self/fd/" + std::to_string(memory.get())).c_str(), O_RDONLY | O_CLOEXEC));
}

// Why the sample cannot be used; nothing when it can.
std::string faultOf(const Sample& sample, std::size_t number) {
    const bool video = sample.ending == "mp4" || sample.ending == "mov" || sample.ending == "webm";
    const auto kind = video ? local::MediaKind::video : local::MediaKind::photo;
    const local::UniqueFd file = fileOf(sample);
    local::Inspection inspection(file.get(), kind);
    const auto answer = inspection.finish();
    if (const auto* failure = std::get_if<local::ImagingFailure>(&answer))
        return failure->sentence;
    const local::PictureSource source{kind,
                                      std::string(30, 'd') + std::to_string(10 + number),
                                      [&] { return fileOf(sample); },
                                      {},
                                      {}};
    return local::coverPicture(source, -1, -1) ? "" : "It has no picture.";
}

void tryDecoders(Examination& all, Section& section) {
    std::size_t number = 0;
    for (const Sample& sample : samples()) {
        const std::string fault = faultOf(sample, number++);
        section.add(sample.ending, sample.ending, fault.empty(),
                    fault.empty() ? "is decoded" : fault);
        if (!fault.empty())
            all.warnings.push_back("Files such as *." + sample.ending +
                                   " cannot be decoded: " + fault);
    }
}

} // namespace

void examineImaging(Examination& all) {
    tryDecoders(all, all.begin("Decoders", "decoders"));
    Section& section = all.begin("Imaging process", "imaging");
    const auto landlock =
        syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    section.add("Landlock", "landlock", std::max<long>(landlock, 0),
                landlock > 0 ? "version " + std::to_string(landlock)
                             : "this kernel has none; the filter of system calls stands alone");
    char* const none = nullptr;
    const Output probe = imagingProcess("--probe-sandbox", &none);
    const bool holds = probe.succeeded && !probe.text.empty();
    section.add("Sandbox", "sandbox", holds,
                holds ? "holds: what is forbidden was tried and refused" : "does not hold");
    if (!holds)
        all.warnings.emplace_back("The sandbox of the imaging process does not hold, or it could "
                                  "not be started.");
    addLibraries(section);
}

} // namespace tool
