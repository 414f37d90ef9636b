// Thumbnails, exports and edits, through the entry points.
#include "tests/photokit/support.h"

#include <sys/resource.h>
#include <sys/stat.h>

#include <atomic>
#include <csignal>
#include <future>
#include <thread>

namespace fs = std::filesystem;

using standin::Failure;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

struct Transfers : PhotoKitTest {
    Transfers() {
        script.assets = {{.id = "a",
                          .resources = {{.type = 1, .name = "a.jpg", .chunks = {"original"}},
                                        {.type = 5, .chunks = {"first ", "second"}}}},
                         {.id = "b", .resources = {{.type = 3}}}};
        script.renderedContent = home / "rendered.jpg";
    }

    jbyteArray thumbnail(jint width = 120, jint height = -7) {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeRequestThumbnail(
            jvm.env(), nullptr, jvm.string("a"), width, height);
    }

    jint exportTo(const fs::path& destination, const std::string& asset = "a", jint id = 5) {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeExportToFile(
            jvm.env(), nullptr, jvm.string(asset), jvm.string(destination), id);
    }

    void cancel(jint id) {
        Java_com_morrowfen_lumatrice_service_PhotosService_nativeCancelExport(jvm.env(), nullptr,
                                                                              id);
    }

    jint editingImage(const fs::path& destination) {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeContentEditingImage(
            jvm.env(), nullptr, jvm.string("a"), jvm.string(destination));
    }

    jint applyEdit(const fs::path& rendered) {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeApplyEdit(
            jvm.env(), nullptr, jvm.string("a"), jvm.string(rendered));
    }

    static std::size_t openFiles() {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
    }
};

} // namespace

TEST_F(Transfers, AsksForAThumbnailWithTheFastOptionsInOrder) {
    script.images = {{.encoded = "JPEG bytes"}};
    const jbyteArray bytes = thumbnail();
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(jvm.bytesOf(bytes), "JPEG bytes");
    EXPECT_THAT(calls(),
                ElementsAre("fetch assets a, options nil", "image: synchronous YES",
                            "image: delivery mode 2", "image: resize mode 1", "image: network YES",
                            "image: version 0", "request image of a, 120 x -7, mode 1",
                            "encode as type 3, {NSImageCompressionFactor = \"0.85\"; }"));
}

TEST_F(Transfers, TakesTheLastThumbnailThatHasABitmap) {
    EXPECT_EQ(thumbnail(), nullptr);
    script.images = {{.encoded = "first"}, {.encoded = "second"}, {.hasBitmap = false}, {false}};
    EXPECT_EQ(jvm.bytesOf(thumbnail()), "second");
    script.images.push_back({.encoded = std::nullopt});
    EXPECT_EQ(thumbnail(), nullptr);
}

TEST_F(Transfers, ExportsTheCurrentVersionChunkByChunk) {
    exportTo(home / "first"); // Foundation opens files of its own, once
    calls();
    const std::size_t before = openFiles();
    const fs::path destination = home / "deep/er/a.jpg";
    fs::create_directories(destination); // what stands there goes, a folder too
    EXPECT_EQ(exportTo(destination), 0);
    EXPECT_EQ(readFile(destination), "first second");
    EXPECT_THAT(calls(), ElementsAre("fetch assets a, options nil", "data request: network YES",
                                     "request data of resource 5"));
    EXPECT_EQ(openFiles(), before);
    script.answersBeforeReturning = true;
    EXPECT_EQ(exportTo(home / "again"), 0);
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(Transfers, ExportsFailEachInItsWay) {
    const std::size_t before = openFiles();
    EXPECT_EQ(exportTo(home / "none", "unknown"), -1);
    EXPECT_EQ(exportTo(home / "none", "b"), -2);
    EXPECT_FALSE(fs::exists(home / "none"));
    write("file", "");
    EXPECT_EQ(exportTo(home / "file/inside"), -3);
    script.asset("a").resources[1].failure = Failure{.code = 3164, .sentence = "no network"};
    EXPECT_EQ(exportTo(home / "partly"), -3);
    EXPECT_EQ(readFile(home / "partly"), "first second");
    script.asset("a").resources[1].failure = Failure{.domain = "any", .code = 3072};
    EXPECT_EQ(exportTo(home / "partly"), -4);
    EXPECT_THAT(logLines(), ElementsAre("export failed for a: no network"));
    EXPECT_EQ(openFiles(), before);
}

TEST_F(Transfers, AFailingWriteIsCaughtChunkByChunk) {
    rlimit unlimited{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &unlimited), 0);
    signal(SIGXFSZ, SIG_IGN);
    const rlimit small{8, unlimited.rlim_max};
    script.asset("a").resources[1].chunks = {"12345678", "9", "10"};
    // The log file must not meet the limit: lines are read from standard error only.
    fs::remove_all(home / ".lumatrice");
    setrlimit(RLIMIT_FSIZE, &small);
    const jint status = exportTo(home / "limited");
    setrlimit(RLIMIT_FSIZE, &unlimited);
    EXPECT_EQ(status, -3);
    EXPECT_EQ(readFile(home / "limited"), "12345678");
}

TEST_F(Transfers, CancelsARunningExportByItsNumber) {
    script.asset("a").resources[1].runsUntilCancelled = true;
    auto running = std::async(std::launch::async, [&] { return exportTo(home / "cancelled"); });
    while (running.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready)
        cancel(5);
    EXPECT_EQ(running.get(), -4);
    EXPECT_EQ(readFile(home / "cancelled"), "first second");
    cancel(5);
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(Transfers, ExportsFromManyThreadsAtOnce) {
    std::vector<jstring> ids;
    std::vector<jstring> destinations;
    for (int i = 0; i < 4; ++i) {
        ids.push_back(jvm.string("a"));
        destinations.push_back(jvm.string(home / std::to_string(i)));
    }
    std::vector<std::thread> threads;
    std::atomic<int> failures = 0;
    for (std::size_t i = 0; i < 4; ++i)
        threads.emplace_back([&, i] {
            for (int round = 0; round < 10; ++round)
                failures +=
                    Java_com_morrowfen_lumatrice_service_PhotosService_nativeExportToFile(
                        jvm.env(), nullptr, ids[i], destinations[i], static_cast<jint>(i)) != 0;
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(readFile(home / "3"), "first second");
}

TEST_F(Transfers, TakesTheUneditedPictureOutForEditing) {
    script.editingImage = write("base.jpg", "base picture");
    script.earlierEdit = "some.other.editor";
    const fs::path destination = write("out.jpg", "what stood there");
    EXPECT_EQ(editingImage(destination), 0);
    EXPECT_EQ(readFile(destination), "base picture");
    EXPECT_THAT(calls(),
                ElementsAre("fetch assets a, options nil", "editing: network YES",
                            "editing: test of adjustment data", "request editing input of a",
                            "edit of some.other.editor can be taken up"));
    script.answersBeforeReturning = true;
    EXPECT_EQ(editingImage(home / "missing/out.jpg"), -3);
    EXPECT_THAT(logLines(), ElementsAre(StartsWith("editing image copy failed: ")));
    script.editingImage = {};
    EXPECT_EQ(editingImage(destination), -2);
    script.givesEditingInput = false;
    EXPECT_EQ(editingImage(destination), -2);
}

TEST_F(Transfers, CommitsARenderedPictureWithTheHostsData) {
    const fs::path rendered = write("from-host.jpg", "rendered bytes");
    // Written as a whole or not at all: what stood there is replaced, not written over.
    fs::create_hard_link(write("rendered.jpg", "earlier"), home / "earlier.jpg");
    EXPECT_EQ(applyEdit(rendered), 0);
    EXPECT_EQ(readFile(script.renderedContent), "rendered bytes");
    EXPECT_EQ(readFile(home / "earlier.jpg"), "earlier");
    EXPECT_THAT(calls(), ElementsAre("fetch assets a, options nil", "editing: network YES",
                                     "editing: test of adjustment data",
                                     "request editing input of a", "make output",
                                     "set adjustment data com.morrowfen.lumatrice.edit 1 "
                                     "'lumatrice'",
                                     "begin changes", "change asset a", "set editing output",
                                     "changes done"));
}

TEST_F(Transfers, EditsFailEachInItsWay) {
    const fs::path rendered = write("from-host.jpg", "rendered bytes");
    EXPECT_EQ(applyEdit(home / "missing.jpg"), -3);
    EXPECT_EQ(applyEdit(home), -3);
    script.changes = {{.done = false, .failure = Failure{.sentence = "refused"}}};
    EXPECT_EQ(applyEdit(rendered), -4);
    script.renderedContent = home / "missing/rendered.jpg";
    EXPECT_EQ(applyEdit(rendered), -3);
    script.givesEditingInput = false;
    EXPECT_EQ(applyEdit(rendered), -2);
    EXPECT_THAT(logLines(),
                ElementsAre("apply edit failed: refused", StartsWith("rendered write failed: ")));
}
