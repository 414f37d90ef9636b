// A worker that a hostile file has taken over: what it tries is refused, what it answers hurts
// nobody, and the host goes on. The program beside this one is that worker.
#include "tests/local/imaging_support.h"

#include "platform/local/imaging/wire/protocol.h"

#include <chrono>
#include <thread>

using namespace imaging_test;

namespace {

class CompromisedWorker : public testing::Test {
protected:
    const Folder folder;

    fs::path order(const std::string& words) const { return writeText(folder / "order", words); }

    // A worker that was killed for trying has not got its way either.
    void isRefused(const std::string& attempt) const {
        const fs::path file = order(attempt);
        EXPECT_NE(failureOf(file), "") << attempt;
        EXPECT_EQ(readBytes(file), attempt) << "the file itself was changed";
        goesOn(attempt);
    }

    void goesOn(const std::string& after) const {
        EXPECT_EQ(sizeOf(cover(order("behave"), 8, 8)), "8x8") << "after: " << after;
    }
};

TEST_F(CompromisedWorker, FilesNetworkProgramsAndOtherProcessesAreOutOfItsReach) {
    if (local::imaging::kInstrumented)
        GTEST_SKIP() << "the system call filter is off under sanitizers";
    for (const char* attempt : {"open", "create", "write", "truncate", "look", "connect", "exec",
                                "fork", "kill", "trace", "peek", "renew"})
        isRefused(attempt);
}

TEST_F(CompromisedWorker, MemoryDescriptorsAndThreadsWithoutEndAreRefused) {
    if (local::imaging::kInstrumented)
        GTEST_SKIP() << "addresses are not bounded under sanitizers";
    for (const char* attempt :
         {"eat", "eat shared", "memory of a descriptor", "descriptor", "threads"})
        isRefused(attempt);
    // Of what the host hands over nothing is left when it has been read, and there is an end to it.
    EXPECT_EQ(sizeOf(cover(order("hoard"), 8, 8)), "1000x1000");
    isRefused("hoarded");
    int served = 0;
    while (served < 30 && cover(order("hoard"), 8, 8))
        ++served;
    EXPECT_LT(served, 30);
    goesOn("hoard");
}

TEST_F(CompromisedWorker, TimeWithoutEndIsRefusedWhileOthersAreServed) {
    if (local::imaging::kInstrumented)
        GTEST_SKIP() << "a worker has minutes under sanitizers";
    const fs::path spinning = writeText(folder / "spinning", "spin");
    bool done = false;
    std::thread caller([&] {
        EXPECT_NE(failureOf(spinning), "");
        done = true;
    });
    const auto start = std::chrono::steady_clock::now();
    // The pool has a worker for each processor; with one alone they queue behind the spinning one.
    goesOn("spin, while it spins");
    EXPECT_TRUE(!done || std::thread::hardware_concurrency() < 2);
    caller.join();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(120));
    goesOn("spin");
}

TEST_F(CompromisedWorker, AFileThatKillsItIsRememberedAndOthersAreServed) {
    const fs::path deadly = order("die");
    int opened = 0;
    const auto openCounted = [&] { return ++opened, open(deadly); };
    const local::PictureSource source{local::MediaKind::photo, "deadlyfile", openCounted};
    EXPECT_EQ(sizeOf(local::coverPicture(source, 300, 300)), "none");
    EXPECT_GT(opened, 0);
    opened = 0;
    EXPECT_EQ(sizeOf(local::coverPicture(source, 300, 300)), "none");
    EXPECT_EQ(opened, 0);
    goesOn("die");
}

TEST_F(CompromisedWorker, AnswersThatNoWorkerShouldGiveAreNoAnswers) {
    for (const char* answer :
         {"die", "flood", "too much", "no picture", "short picture", "huge picture",
          "empty picture", "two pictures", "descriptor for a picture", "two descriptors"}) {
        EXPECT_EQ(sizeOf(cover(order(answer), 8, 8)), "none") << answer;
        goesOn(answer);
    }
}

} // namespace
