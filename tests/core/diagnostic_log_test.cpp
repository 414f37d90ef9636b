#include "bridge/diagnostic_log.h"
#include "tests/core/support.h"

#include <fstream>
#include <thread>

namespace fs = std::filesystem;

TEST(DiagnosticLog, WritesTheLineToStandardErrorAndWithItsTimeToTheFile) {
    const support::ScratchHome home;
    const std::string shown = standardErrorOf([] {
        photosLogLine("first 100% %s");
        photosLogFormatted("second %d\nline", 2);
    });
    EXPECT_EQ(shown, "[photos] first 100% %s\n[photos] second 2\nline\n");
    const std::string kept = support::readBytes(home.logFile());
    const std::string time = "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} ";
    EXPECT_THAT(kept, testing::MatchesRegex(time + "first 100% %s\n" + time + "second 2\nline\n"));
}

TEST(DiagnosticLog, AppendsAndStartsAgainWhenTheFileWasTakenAway) {
    const support::ScratchHome home;
    std::ofstream(home.logFile()) << "2020-01-01 00:00:00 before\n";
    photosLogLine("after");
    EXPECT_THAT(home.logLines(), ElementsAre("before", "after"));
    fs::remove(home.logFile());
    photosLogLine("again");
    EXPECT_THAT(home.logLines(), ElementsAre("again"));
}

TEST(DiagnosticLog, MakesDoWithStandardErrorWhereThereIsNoFileToWrite) {
    const support::ScratchHome home;
    fs::remove_all(home.path() / ".lumatrice");
    EXPECT_EQ(standardErrorOf([] { photosLogLine("no folder"); }), "[photos] no folder\n");
    EXPECT_TRUE(fs::is_empty(home.path())) << "the log's folder is not ours to make";

    unsetenv("HOME");
    EXPECT_EQ(standardErrorOf([] { photosLogLine("no home"); }), "[photos] no home\n");

    // The path of the log is cut where its buffer ends, here inside a folder that does not exist.
    setenv("HOME", ("/" + std::string(2000, 'h')).c_str(), 1);
    EXPECT_EQ(standardErrorOf([] { photosLogLine("long home"); }), "[photos] long home\n");
}

TEST(DiagnosticLog, UsesAPathThatWasCutAsItStands) {
    const support::ScratchHome home;
    // 1023 bytes of path end inside the file's own name.
    const std::string tail = "/.lumatrice/logs/photos-native.log";
    std::string deepHome = home.path();
    while (deepHome.size() + tail.size() < 1023 + 4)
        deepHome +=
            "/" +
            std::string(std::min<std::size_t>(200, 1026 - tail.size() - deepHome.size()), 'd');
    fs::create_directories(deepHome + "/.lumatrice/logs");
    setenv("HOME", deepHome.c_str(), 1);
    photosLogLine("kept");
    const std::string cut = (deepHome + tail).substr(0, 1023);
    EXPECT_THAT(support::readBytes(cut), testing::EndsWith(" kept\n"));
}

TEST(DiagnosticLog, LinesFromSeveralThreadsLandWhole) {
    const support::ScratchHome home;
    const std::string text(1500, 't');
    standardErrorOf([&] {
        std::vector<std::thread> threads;
        threads.reserve(4);
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([&] {
                for (int line = 0; line < 50; ++line)
                    photosLogLine(text.c_str());
            });
        for (std::thread& thread : threads)
            thread.join();
    });
    EXPECT_THAT(home.logLines(), SizeIs(200));
    EXPECT_THAT(home.logLines(), testing::Each(text));
}
