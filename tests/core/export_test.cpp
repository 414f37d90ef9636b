#include "tests/core/support.h"
#include "transfer/export_registry.h"

#include <chrono>
#include <future>

namespace {

const std::string photos(PHPhotosErrorDomain);
constexpr jint exportId = 5;

struct Export : CoreTest {
    Export() {
        library.assets = {imageAsset("one")};
        library.resources["one"] = {resourceNamed(1, "one.jpg")};
        library.transfers = {{.chunks = {"first ", "second ", "third"}}};
    }

    std::string exportOne() { return CALL(ExportToFile, "one", "/out/one.jpg", exportId); }

    std::string exportOneAs(const Transfer& transfer) {
        library.transfers = {transfer};
        return exportOne();
    }

    static void cancel(jint id = exportId) { METHOD(CancelExport)(nullptr, nullptr, id); }

    std::future<std::string> startExport(const std::string& destination, jint id = exportId) {
        return std::async(std::launch::async, [this, destination, id] {
            return CALL(ExportToFile, "one", destination, id);
        });
    }

    // Until the export that runs under the id is that of the request.
    static void waitUntilRegistered(PHAssetResourceDataRequestID requestId) {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(120);
        while (dataRequestOfExport(exportId) != requestId) {
            ASSERT_LT(std::chrono::steady_clock::now(), limit) << "is not registered";
            std::this_thread::yield();
        }
    }

    std::string exported() { return library.files["/out/one.jpg"]; }
};

} // namespace

TEST_F(Export, StreamsTheFileToANewOneAndClosesIt) {
    library.files["/out/one.jpg"] = "what stood there";
    // All over before the request has returned, so that the order of the lines is one.
    library.transfers[0].handlers = HandlerCalls::onceFromAnotherThreadBeforeReturning;
    EXPECT_EQ(exportOne(), "0");
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("fetch assets one", "asset at 0", "make directory /out",
                            "remove /out/one.jpg", "create /out/one.jpg", "open /out/one.jpg",
                            "request data of one.jpg, network", "write 'first '", "write 'second '",
                            "write 'third'", "data request 7001", "close /out/one.jpg"));
    EXPECT_EQ(exported(), "first second third");
    EXPECT_EQ(jvm.charactersHeld, 0);
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(Export, ChoosesTheCurrentVersionWhereverItStandsElseTheFirstOriginal) {
    const auto chosenOf = [&](const std::vector<long>& types) {
        Library fresh;
        fresh.assets = {imageAsset("one")};
        for (const long type : types)
            fresh.resources["one"].push_back(
                resourceNamed(type, std::to_string(fresh.resources["one"].size())));
        EXPECT_EQ(exportOne(), "0");
        for (const std::string& line : fresh.operations()) {
            if (line.starts_with("request data of "))
                return line.substr(sizeof "request data of " - 1, 1);
        }
        return std::string("none");
    };
    EXPECT_EQ(chosenOf({1, 5}), "1");
    EXPECT_EQ(chosenOf({5, 1}), "0");
    EXPECT_EQ(chosenOf({7, 2, 1, 6, 5}), "3");
    EXPECT_EQ(chosenOf({3, 2, 1}), "1");
    EXPECT_EQ(chosenOf({4, 7, 1, 2}), "2");
}

TEST_F(Export, OfNoPhotoOrVideoLeavesTheDestinationAlone) {
    library.resources["one"].clear();
    for (const long type : {0, 3, 4, 7, 8, 9, 10, 11})
        library.resources["one"].push_back(resourceNamed(type, "other"));
    EXPECT_EQ(exportOne(), "-2");
    EXPECT_FALSE(happened("/out"));
}

TEST_F(Export, MakesNoDirectoryForAFileNameAloneAndIgnoresWhatThePreparationsAnswer) {
    EXPECT_EQ(CALL(ExportToFile, "one", "one.jpg", exportId), "0");
    EXPECT_FALSE(happened("make directory"));
    library.failing = {"make directory /out", "remove /out/one.jpg"};
    EXPECT_EQ(exportOne(), "0");
    const auto before = library.operations().size();
    for (const jni::Text& none :
         {jni::Text(""), jni::Text(jni::unreadable), jni::Text("/out/\xED\xA0\xBD\xED\xB8\x80")})
        EXPECT_EQ(CALL(ExportToFile, "one", none, exportId), "-3");
    EXPECT_EQ(library.operations().size(), before + 3 * 4) << "a look at the asset in a scope";
}

TEST_F(Export, ThatCannotMakeOrOpenItsFileStartsNoTransfer) {
    library.files["/out/one.jpg"] = "what stood there";
    library.failing = {"open /out/one.jpg"};
    EXPECT_EQ(exportOne(), "-3");
    EXPECT_THAT(library.files, Contains(std::pair<const std::string, std::string>(
                                   "/out/one.jpg", ""))); // stays, empty
    library.failing = {"create /out/one.jpg"};
    EXPECT_EQ(exportOne(), "-3");
    EXPECT_THAT(library.files, IsEmpty());
    EXPECT_FALSE(happened("request data"));
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(Export, TriesEveryChunkThoughWritesFail) {
    library.writeAnswers = {{.fails = true, .reason = "Disk full."}, {}, {.fails = true}};
    EXPECT_EQ(exportOne(), "-3");
    EXPECT_EQ(exported(), "second ");
    EXPECT_THAT(home.logLines(), ElementsAre("export write failed for one: Disk full.",
                                             "export write failed for one: (unknown)"));
    EXPECT_THAT(library.operations(), Contains("close /out/one.jpg"));
    EXPECT_EQ(dataRequestOfExport(exportId), std::nullopt);
}

TEST_F(Export, LetsTheEndOfTheTransferOverruleAFailedWrite) {
    library.writeAnswers = {{.fails = true, .reason = "Full."}};
    EXPECT_EQ(exportOneAs({.chunks = {"a"}, .error = NSError{photos, 3072, "cancelled"}}), "-4");
    library.writeAnswers = {{.fails = true, .reason = "Full again."}};
    EXPECT_EQ(exportOneAs({.chunks = {"a"}, .error = NSError{"net", -1009, "Offline."}}), "-3");
    EXPECT_THAT(home.logLines(), ElementsAre("export write failed for one: Full.",
                                             "export write failed for one: Full again.",
                                             "export failed for one: Offline."));
}

TEST_F(Export, TellsACancellationByItsCodeInAnyDomain) {
    EXPECT_EQ(exportOneAs({.error = NSError{photos, 3072, "cancelled"}}), "-4");
    EXPECT_EQ(exportOneAs({.error = NSError{"NSCocoaErrorDomain", 3072, "cancelled"}}), "-4");
    EXPECT_THAT(home.logLines(), IsEmpty());
    EXPECT_EQ(exportOneAs({.chunks = {"part"}, .error = NSError{photos, 3164, "Network."}}), "-3");
    EXPECT_EQ(exportOneAs({.error = NSError{photos, 3072 + (1L << 32), std::nullopt}}), "-3");
    EXPECT_THAT(home.logLines(),
                ElementsAre("export failed for one: Network.", "export failed for one: (unknown)"));
}

TEST_F(Export, IsCompleteWhereverAndWheneverTheHandlersRun) {
    for (const HandlerCalls handlers :
         {HandlerCalls::onceBeforeReturning, HandlerCalls::onceFromAnotherThreadBeforeReturning,
          HandlerCalls::onceFromAnotherThread}) {
        for (int round = 0; round < 50; ++round) {
            ASSERT_EQ(exportOneAs({.chunks = {"a", "b"}, .handlers = handlers}), "0");
            ASSERT_EQ(exported(), "ab");
            ASSERT_EQ(dataRequestOfExport(exportId), std::nullopt);
        }
    }
}

TEST_F(Export, SurvivesHandlersThatRunAgainAfterTheEnd) {
    for (int round = 0; round < 50; ++round) {
        const std::string status =
            exportOneAs({.chunks = {"a"}, .handlers = HandlerCalls::twiceFromAnotherThread});
        EXPECT_THAT(status, testing::AnyOf("0", "-3")); // a second write may meet the closed file
    }
    library.operations();
}

// Cancelling in each of the states that an export passes through.

TEST_F(Export, IgnoresACancellationBeforeItsTransferHasStarted) {
    library.reactions["create /out/one.jpg"] = [] { cancel(); };
    EXPECT_EQ(exportOne(), "0");
    EXPECT_FALSE(happened("cancel"));
}

TEST_F(Export, IgnoresACancellationBetweenItsStartAndItsRegistration) {
    library.reactions["data request 7001"] = [] { cancel(); };
    EXPECT_EQ(exportOne(), "0");
    EXPECT_FALSE(happened("cancel"));
}

TEST_F(Export, EndsWhenItIsCancelledWhileItsTransferRuns) {
    library.transfers = {
        {.chunks = {"part"}, .runsUntilCancelled = true, .chunksAfterCancel = {" and more"}}};
    library.reactions["write ' and more'"] = [] { cancel(); }; // a second time
    auto running = startExport("/out/one.jpg");
    waitUntilRegistered(7001);
    cancel(exportId + 1); // nobody's
    cancel();
    EXPECT_EQ(running.get(), "-4");
    EXPECT_EQ(exported(), "part and more"); // what was written stays
    EXPECT_THAT(library.operations(), Contains("cancel data request 7001").Times(2));
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(Export, StandsWhenItIsCancelledAfterTheTransferAndBeforeItsFileIsClosed) {
    library.reactions["close /out/one.jpg"] = [] { cancel(); };
    EXPECT_EQ(exportOne(), "0");
    EXPECT_EQ(exported(), "first second third");
    EXPECT_THAT(library.operations(), Contains("cancel data request 7001"));
}

TEST_F(Export, CannotBeCancelledOnceItIsOver) {
    cancel(); // there was none before either
    EXPECT_EQ(exportOne(), "0");
    cancel();
    EXPECT_EQ(exportOneAs({.error = NSError{"net", 1, "Offline."}}), "-3");
    cancel();
    EXPECT_FALSE(happened("cancel"));
    EXPECT_EQ(library.operations().back(), "close scope");
}

TEST_F(Export, UnderTheIdOfARunningOneTakesItsPlaceAndThenLeavesNone) {
    const Transfer endless = {.chunks = {"part"}, .runsUntilCancelled = true};
    library.transfers = {endless, endless};
    auto first = startExport("/out/one.jpg");
    waitUntilRegistered(7001);
    auto second = startExport("/out/two.jpg");
    waitUntilRegistered(7002);
    cancel();
    EXPECT_EQ(second.get(), "-4");
    cancel(); // the second one has taken the first one's entry away
    EXPECT_EQ(first.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    cancelDataRequest(7001);
    EXPECT_EQ(first.get(), "-4");
    EXPECT_THAT(library.operations(), Contains("cancel data request 7001").Times(1));
    EXPECT_THAT(library.operations(), Contains("cancel data request 7002").Times(1));
}

TEST_F(Export, RunsBesideOthersEachWithAFileOfItsOwn) {
    constexpr int total = 8;
    library.transfers.assign(total, {.chunks = {"a", "b"}});
    std::vector<std::future<std::string>> running;
    for (int i = 0; i < total; ++i)
        running.push_back(startExport("/out/" + std::to_string(i), i));
    for (auto& each : running)
        EXPECT_EQ(each.get(), "0");
    for (int i = 0; i < total; ++i)
        EXPECT_EQ(library.files["/out/" + std::to_string(i)], "ab");
}
