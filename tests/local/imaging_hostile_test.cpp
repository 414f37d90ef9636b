// Files made to hurt, and workers that die: the host stays well and serves the next caller.
#include "imaging_support.h"
#include "tests/local/support.h"

#include "platform/local/imaging/worker/request.h"
#include "platform/local/imaging/worker_pool.h"

#include <csignal>
#include <fstream>
#include <iterator>
#include <thread>

#include <unistd.h>

using namespace imaging_test;
using namespace local::imaging;
using local::MediaKind;

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

// Gone, or about to be taken away by whoever inherits it: its threads go after it.
bool hasEnded(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    file.ignore(4096, ')'); // behind the program's name
    const std::vector<std::string> status{std::istream_iterator<std::string>(file), {}};
    return status.empty() || (status[0] == "Z" && status[17] == "1");
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
    run(folder, "vips copy good.jpg a.png && head -c 20 a.png >header.png");
    for (const char* name : {"empty.jpg", "text.jpg", "drawing.png", "page.jpg", "header.png"}) {
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
    run(folder, "vips black huge.png[bitdepth=1,compression=1] 60000 60000 &&"
                " vips black large.png[bitdepth=1,compression=1] 20000 20000");
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
    writeRaw(folder, "a.dng", "48 64");
    std::string loop = readBytes(folder / "a.dng"); // its directory begins behind eight bytes
    std::string wide = loop;
    loop.replace(10 + 12 * static_cast<std::size_t>(loop[8]), 4, "\x08\0\0\0"s);
    writeText(folder / "loop.tif", loop); // the directory follows itself
    const std::string width = "\0\1\3\0\1\0\0\0\x40\0\0\0"s;
    wide.replace(wide.find(width), width.size(), "\0\1\4\0\1\0\0\0\xff\xff\xff\x7f"s);
    writeText(folder / "wide.dng", wide);
    for (const char* name : {"huge.png", "large.png", "huge.jpg", "progressive.jpg", "huge.gif",
                             "loop.tif", "wide.dng"})
        survives(folder / name);
    EXPECT_EQ(infoOf(folder / "huge.png").width, 60000U); // it may be somebody's only copy
    EXPECT_EQ(sizeOf(cover(folder / "huge.png", 64, 64)), "none");
    EXPECT_EQ(sizeOf(cover(folder / "large.png", 64, 64)), "64x64");
}

TEST_F(ImagingHostile, IdleWorkersThatWereEndedAreReplacedUnnoticed) {
    const auto before = openDescriptors();
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
    if (kInstrumented)
        GTEST_SKIP() << "the sanitizers need descriptors themselves";
    std::string why;
    {
        const auto exhausted = exhaustDescriptors();
        EXPECT_FALSE(WorkerProcess::start(false, &why));
    }
    EXPECT_THAT(why, HasSubstr("/photos-kit-imaging did not start: Too many open files."));
}

TEST_F(ImagingHostile, WorkersEndWithTheirHost) {
    pid_t worker = -1;
    {
        const auto host = otherProcess([&] {
            const auto started = WorkerProcess::start(false);
            writeText(folder / "worker", std::to_string(workers().at(0)));
            pause();
        });
        while (!(std::ifstream(folder / "worker") >> worker))
            std::this_thread::yield();
    }
    while (!hasEnded(worker))
        std::this_thread::yield();
}

std::optional<CheckedAnswer> check(const Answer& answer, Task task) {
    return checkAnswer(reinterpret_cast<const std::byte*>(&answer), sizeof answer, task);
}

TEST(ImagingProtocol, TheHostBelievesNoImpossibleAnswer) {
    const auto isBelieved = [](Task task, std::uint32_t width, std::uint32_t height,
                               Outcome outcome = Outcome::done) {
        return check(Answer{kAnswerMark, outcome, width, height}, task).has_value();
    };
    EXPECT_TRUE(isBelieved(Task::photoPicture, 5, 5));
    EXPECT_TRUE(isBelieved(Task::inspectPhoto, 60000, 60000));
    EXPECT_FALSE(isBelieved(Task::inspectPhoto, 0, 5));
    EXPECT_FALSE(isBelieved(Task::photoPicture, 5, 0));
    EXPECT_FALSE(isBelieved(Task::photoPicture, 20000, 20000));
    EXPECT_FALSE(isBelieved(Task::photoPicture, 65501, 1));
    EXPECT_FALSE(isBelieved(Task::photoPicture, 1, 65501));
    EXPECT_FALSE(isBelieved(Task::photoPicture, 5, 5, static_cast<Outcome>(99)));
    Answer strange{kAnswerMark, Outcome::done, 5, 5};
    strange.flags = ~0U;
    strange.durationSeconds = -1e308;
    strange.day = 1;
    for (const auto& [year, month] : {std::pair{2024, 13}, {0, 1}, {10'000, 1}, {-5, 1}}) {
        strange.year = year;
        strange.month = month;
        const auto checked = check(strange, Task::inspectVideo);
        ASSERT_TRUE(checked);
        EXPECT_FALSE(std::get<local::MediaInfo>(checked->result).captured) << year;
        EXPECT_EQ(std::get<local::MediaInfo>(checked->result).durationSeconds, 0);
    }
    strange.format = static_cast<FileFormat>(1000);
    EXPECT_FALSE(check(strange, Task::inspectVideo));
}

} // namespace
