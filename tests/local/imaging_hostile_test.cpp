// Files made to hurt, and workers that die: the host stays well and serves the next caller.
#include "imaging_support.h"

#include "platform/local/imaging/worker/request.h"
#include "platform/local/imaging/worker_pool.h"

#include <chrono>
#include <csignal>
#include <cstring>
#include <fstream>
#include <iterator>
#include <thread>

#include <sys/resource.h>
#include <sys/wait.h>

using namespace imaging_test;
using namespace local::imaging;
using local::MediaKind;
using std::chrono::milliseconds;

namespace {

// The worker processes of this process.
std::vector<pid_t> workers() {
    std::vector<pid_t> found;
    for (const auto& thread : fs::directory_iterator("/proc/self/task")) {
        std::ifstream children(thread.path() / "children");
        for (pid_t child = 0; children >> child;)
            found.push_back(child);
    }
    return found;
}

// The words of /proc/PID/stat after the program's name; none for a process that is gone.
std::vector<std::string> statusOf(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    file.ignore(4096, ')');
    return {std::istream_iterator<std::string>(file), {}};
}

// Gone, or about to be taken away by whoever inherits it.
bool hasEnded(pid_t process) {
    const auto status = statusOf(process);
    return status.empty() || (status[0] == "Z" && status[17] == "1"); // its threads go after it
}

std::size_t openDescriptors() {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

class ImagingHostile : public testing::Test {
protected:
    const Folder folder;

    void SetUp() override { writeJpeg(folder / "good.jpg", quarters(640, 480)); }

    // Ends, with or without a picture, and the next caller is served.
    void survives(const fs::path& path, MediaKind kind = MediaKind::photo) {
        inspect(path, kind);
        cover(path, 256, 256, kind);
        cover(path, -1, -1, kind);
        EXPECT_EQ(sizeOf(cover(folder / "good.jpg", 64, 48)), "64x48") << "after " << path;
    }
};

TEST_F(ImagingHostile, FilesThatAreNoPicturesSaySo) {
    writeText(folder / "empty.jpg", "");
    writeText(folder / "text.jpg", "This is not a picture, whatever its name says.");
    writeText(folder / "drawing.png",
              "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>");
    writeText(folder / "page.jpg", "%PDF-1.4\n1 0 obj<<>>endobj trailer<<>>\n");
    writeText(folder / "header.png", blackPng(8, 8).substr(0, 20));
    writeText(folder / "zero.png", blackPng(0, 8));
    for (const char* name :
         {"empty.jpg", "text.jpg", "drawing.png", "page.jpg", "header.png", "zero.png"}) {
        EXPECT_EQ(failureOf(folder / name), "The file is not a picture that can be read.") << name;
        EXPECT_EQ(sizeOf(cover(folder / name, 64, 64)), "none") << name;
    }
    EXPECT_EQ(failureOf("/dev/null"), "The file cannot be opened.");
    EXPECT_EQ(failureOf(folder.path()), "The file cannot be opened.");
}

TEST_F(ImagingHostile, VideosThatNameOtherFilesAreRefused) {
    run(folder, "ffmpeg -v error -f lavfi -i testsrc=s=320x240:d=1 -c:v mpeg4 real.mp4");
    const std::string real = (folder / "real.mp4").string();
    writeText(folder / "list.mp4", "ffconcat version 1.0\nfile '" + real + "'\n");
    writeText(folder / "play.mp4", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\n" + real + "\n");
    writeJpeg(folder / "still.mp4", quarters(64, 48));
    for (const char* name : {"list.mp4", "play.mp4", "still.mp4"}) {
        EXPECT_NE(failureOf(folder / name, MediaKind::video), "") << name;
        EXPECT_EQ(sizeOf(cover(folder / name, 64, 64, MediaKind::video)), "none") << name;
    }
}

TEST_F(ImagingHostile, TruncatedFilesEndAndAJpegShowsWhatItHas) {
    run(folder, "vips copy good.jpg a.png && vips copy good.jpg a.webp && vips copy good.jpg a.tif"
                " && vips copy good.jpg a.gif && vips copy good.jpg a.jxl && heif-enc good.jpg -o "
                "a.heic && vips jpegsave good.jpg p.jpg --interlace && ffmpeg -v error -f lavfi -i "
                "testsrc=s=320x240:d=1 -c:v mpeg4 -movflags faststart a.mp4");
    for (const char* name :
         {"good.jpg", "p.jpg", "a.png", "a.webp", "a.tif", "a.gif", "a.jxl", "a.heic", "a.mp4"}) {
        const std::string bytes = readBytes(folder / name);
        const auto kind = std::string(name) == "a.mp4" ? MediaKind::video : MediaKind::photo;
        for (const double part : {0.1, 0.5, 0.9}) {
            const fs::path cut = folder / ("cut-" + std::string(name));
            writeText(cut, bytes.substr(0, static_cast<std::size_t>(double(bytes.size()) * part)));
            survives(cut, kind);
        }
    }
    const std::string bytes = readBytes(folder / "good.jpg");
    writeText(folder / "half.jpg", bytes.substr(0, bytes.size() / 2));
    EXPECT_EQ(infoOf(folder / "half.jpg").width, 640U);
    const auto half = cover(folder / "half.jpg", 64, 48);
    ASSERT_EQ(sizeOf(half), "64x48");
    EXPECT_TRUE(isNear(colourAt(*half, 0.2, 0.1), {255, 0, 0}, 12));
}

TEST_F(ImagingHostile, BombsCostSecondsAndNoMoreMemoryThanTheirBound) {
    writeText(folder / "huge.png", blackPng(60000, 60000));
    writeText(folder / "large.png", blackPng(20000, 20000));
    std::string jpeg = readBytes(folder / "good.jpg");
    const auto frame = jpeg.find("\xff\xc0");
    ASSERT_NE(frame, std::string::npos);
    jpeg.replace(frame + 5, 4, "\xea\x60\xea\x60"); // 60,000 each way
    writeText(folder / "huge.jpg", jpeg);
    jpeg[frame + 1] = '\xc2'; // and progressive
    writeText(folder / "progressive.jpg", jpeg);
    using namespace std::string_literals;
    writeText(folder / "huge.gif", "GIF89a\xff\xff\xff\xff\x80\0\0\0\0\0\xff\xff\xff,\0\0\0\0"
                                   "\xff\xff\xff\xff\0\2\2D\1\0;"s);
    std::string dng = rawDng(64, 48, "2024:05:06 07:08:09");
    std::string loop = dng;
    std::memcpy(loop.data() + loop.size() - 4, "\x08\0\0\0", 4);
    const auto directory = static_cast<std::size_t>(8 + 64 * 48 * 2);
    const std::size_t next = directory + 2 + 22 * 12;
    loop.replace(next, 4, loop.substr(4, 4)); // the directory follows itself
    writeText(folder / "loop.tif", loop);
    dng.replace(directory + 2 + 12 + 8, 4, std::string("\xff\xff\xff\x7f", 4)); // its width
    writeText(folder / "wide.dng", dng);
    for (const char* name : {"huge.png", "large.png", "huge.jpg", "progressive.jpg", "huge.gif",
                             "loop.tif", "wide.dng"})
        survives(folder / name);
    EXPECT_EQ(infoOf(folder / "huge.png").width, 60000U); // it may be somebody's only copy
    EXPECT_EQ(sizeOf(cover(folder / "huge.png", 64, 64)), "none");
    EXPECT_EQ(sizeOf(cover(folder / "large.png", 64, 64)), "64x64");
}

TEST_F(ImagingHostile, IdleWorkersThatWereEndedAreReplacedUnnoticed) {
    const std::size_t before = openDescriptors();
    for (int i = 0; i < 3; ++i) {
        signal(SIGCHLD, i == 1 ? SIG_IGN : SIG_DFL); // a host may let the system reap its children
        for (const pid_t worker : workers())
            for (kill(worker, SIGKILL); !hasEnded(worker);)
                std::this_thread::yield();
        EXPECT_EQ(sizeOf(cover(folder / "good.jpg", 64, 48)), "64x48");
    }
    EXPECT_LE(openDescriptors(), before + 4);
}

TEST_F(ImagingHostile, AWorkerThatCannotBeStartedSaysWhichAndWhy) {
    if (kSanitized)
        GTEST_SKIP() << "the sanitizers need descriptors themselves";
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none{3, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    std::string why;
    EXPECT_FALSE(WorkerProcess::start(false, &why));
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_NE(why.find("/photos-kit-imaging did not start: Too many open files."), why.npos) << why;
}

TEST_F(ImagingHostile, WorkersEndWithTheirHost) {
    int pipeEnds[2];
    ASSERT_EQ(pipe(pipeEnds), 0);
    const pid_t host = fork();
    if (host == 0) {
        const auto worker = WorkerProcess::start(false);
        const auto all = workers();
        const pid_t answer = worker && !all.empty() ? all.front() : -1;
        if (write(pipeEnds[1], &answer, sizeof answer) > 0)
            pause();
        _exit(1);
    }
    pid_t worker = -1;
    ASSERT_EQ(::read(pipeEnds[0], &worker, sizeof worker), ssize_t(sizeof worker));
    ASSERT_GT(worker, 0);
    kill(host, SIGKILL);
    waitpid(host, nullptr, 0);
    while (!hasEnded(worker))
        std::this_thread::sleep_for(milliseconds(5));
    close(pipeEnds[0]);
    close(pipeEnds[1]);
}

TEST_F(ImagingHostile, TheSandboxRefusesFilesNetworkAndPrograms) {
    if (kSanitized)
        GTEST_SKIP() << "the system call filter is off under sanitizers";
    const fs::path program =
        fs::read_symlink("/proc/self/exe").parent_path() / "photos-kit-imaging";
    run(folder, program.string() + " --probe-sandbox > probe && ! grep ALLOWED probe &&"
                                   " grep -q 'open a file: refused' probe");
}

Answer answered(Outcome outcome, std::uint32_t width, std::uint32_t height) {
    return Answer{kAnswerMark, outcome, width, height};
}

std::optional<CheckedAnswer> check(const Answer& answer, Task task) {
    std::array<std::byte, sizeof answer> bytes{};
    std::memcpy(bytes.data(), &answer, sizeof answer);
    return checkAnswer(bytes.data(), bytes.size(), task);
}

TEST(ImagingProtocol, TheHostBelievesNoImpossibleAnswer) {
    EXPECT_TRUE(check(answered(Outcome::done, 5, 5), Task::photoPicture));
    EXPECT_TRUE(check(answered(Outcome::done, 60000, 60000), Task::inspectPhoto));
    EXPECT_FALSE(check(answered(Outcome::done, 0, 5), Task::inspectPhoto));
    EXPECT_FALSE(check(answered(Outcome::done, 5, 0), Task::photoPicture));
    EXPECT_FALSE(check(answered(Outcome::done, 20000, 20000), Task::photoPicture));
    EXPECT_FALSE(check(answered(Outcome::done, 65501, 1), Task::photoPicture));
    EXPECT_FALSE(check(answered(Outcome::done, 1, 65501), Task::photoPicture));
    EXPECT_FALSE(check(answered(static_cast<Outcome>(99), 5, 5), Task::photoPicture));
    Answer strange = answered(Outcome::done, 5, 5);
    strange.flags = ~0U;
    strange.durationSeconds = -1e308;
    for (const auto& [year, month] : {std::pair{2024, 13}, {0, 1}, {10'000, 1}, {-5, 1}}) {
        strange.year = year;
        strange.month = month;
        strange.day = 1;
        const auto checked = check(strange, Task::inspectVideo);
        ASSERT_TRUE(checked);
        EXPECT_FALSE(std::get<local::MediaInfo>(checked->result).captured) << year;
        EXPECT_EQ(std::get<local::MediaInfo>(checked->result).durationSeconds, 0);
    }
    strange.format = static_cast<FileFormat>(1000);
    EXPECT_FALSE(check(strange, Task::inspectVideo));
}

} // namespace
