// Files becoming assets: what is kept of them, what is refused, and that nothing is half made.
#include "tests/local/imaging_support.h"
#include "tests/local/support.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/change/capture_date.h"
#include "platform/local/library/library.h"
#include "platform/local/store/file_store.h"
#include "platform/local/store/incoming_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

namespace {

void expectNothingKept(const ScratchHome& home) {
    EXPECT_EQ(sqlInteger(home, "SELECT count(*) FROM asset"), 0);
    EXPECT_THAT(filesBelow(home.library() / "originals"), IsEmpty());
    EXPECT_THAT(filesBelow(home.library() / "incoming"), IsEmpty());
}

void dateFile(const fs::path& path, std::int64_t seconds, long nanoseconds) {
    const timespec times[2] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

} // namespace

TEST(AssetImport, KeepsTheBytesTheNameAndTheType) {
    const ScratchHome home;
    const auto picture = writePicture(home.file("Üb 😀\"er's %s\n.JPG"), 90, 60);
    const auto outcome = importFile(picture);
    ASSERT_TRUE(outcome.identifier) << outcome.sentence();
    EXPECT_EQ(outcome.identifier->at(14), '4') << "a random UUID";
    EXPECT_TRUE(fs::exists(picture));
    const auto asset = assetWith(*outcome.identifier).value();
    EXPECT_EQ(asset.pixelWidth, 90u);
    EXPECT_EQ(asset.pixelHeight, 60u);
    EXPECT_EQ(asset.mediaType, PHAssetMediaTypeImage);
    const auto resources = assetResourcesForAsset(asset);
    ASSERT_EQ(resources.size(), 1u);
    EXPECT_EQ(resources[0].type, PHAssetResourceTypePhoto);
    EXPECT_EQ(resources[0].originalFilename, "Üb \uFFFD\"er's %s\n.JPG");
    EXPECT_EQ(local::recordOf(asset).filename, picture.filename().string());
    EXPECT_EQ(resources[0].uniformTypeIdentifier, "public.jpeg");
    const fs::path original = originalOf(home, *outcome.identifier);
    EXPECT_EQ(readBytes(original), readBytes(picture));
    EXPECT_EQ(fs::status(original).permissions(), fs::perms::owner_read);
    EXPECT_THAT(filesBelow(home.library() / "incoming"), IsEmpty());
}

TEST(AssetImport, ThatIsStoppedLeavesNothing) {
    const ScratchHome home;
    const auto picture = writePicture(home.file("a.jpg"));
    local::stopCopiesWhen([] { return true; });
    EXPECT_EQ(importFile(picture).error.code, ECANCELED);
    local::stopCopiesWhen(nullptr);
    expectNothingKept(home);
    EXPECT_NE(importFile(picture).identifier, importFile(picture).identifier);
    EXPECT_EQ(listed().count(), 2u) << "the same file twice is two assets";
}

TEST(AssetImport, TypeAndDateComeFromTheBytesElseTheDateFromTheFile) {
    const ScratchHome home;
    const auto picture = writePicture(home.file("scan"));
    dateFile(picture, 1'000'000'007, 250'000'000);
    const auto asset = assetWith(importFile(picture).identifier.value()).value();
    EXPECT_EQ(assetResourcesForAsset(asset)[0].uniformTypeIdentifier, "public.jpeg");
    EXPECT_EQ(asset.creationDate, 1'000'000'007.25);
    imaging_test::run(home, "cp scan a.jpg && exiftool -q -overwrite_original -DateTimeOriginal="
                            "'2001:02:03 04:05:06' -OffsetTimeOriginal=+00:00 a.jpg &&"
                            " ffmpeg -v error -i scan -c:v mpeg4 a.mp4");
    EXPECT_EQ(assetWith(*importFile(home.file("a.jpg")).identifier)->creationDate, 981'173'106.0);
    const auto film =
        assetWith(*importFile(home.file("a.mp4"), PHAssetResourceTypeVideo).identifier);
    EXPECT_EQ(film->mediaType, PHAssetMediaTypeVideo);
    EXPECT_EQ(assetResourcesForAsset(*film)[0].type, PHAssetResourceTypeVideo);
}

TEST(AssetImport, ATimeThatNoCalendarKnowsIsThePresent) {
    const ScratchHome home("/dev/shm"); // of memory: it keeps any time
    const auto picture = writePicture(home.file("a.jpg"));
    for (const std::int64_t seconds :
         {std::int64_t{9'300'000'000'000}, 9'200'000'000'000'000'000, -4'000'000'000'000'000'000}) {
        dateFile(picture, seconds, 1'000'000);
        const double before = static_cast<double>(time(nullptr));
        const auto asset = assetWith(importFile(picture).identifier.value()).value();
        EXPECT_GE(asset.creationDate, before) << seconds;
        EXPECT_LE(asset.creationDate, static_cast<double>(time(nullptr) + 1)) << seconds;
    }
    runSql(home, "UPDATE asset SET created = n * 4000000000000000000 - 8000000000000000000");
    EXPECT_EQ(listed().objectAtIndex(0)->creationDate, 253'402'300'799.999);
    EXPECT_EQ(listed().objectAtIndex(2)->creationDate, -62'135'596'800.0);
}

TEST(AssetImport, WhatCannotBeAnAssetIsRefusedWithASentence) {
    const ScratchHome home;
    fetchAssetsWithOptions({});
    writeText(home.file("empty.jpg"), "");
    writeText(home.file("text.jpg"), "these are not the bytes of a picture");
    writeText(home.file("noise.mov"), std::string(5000, '\x5a'));
    mkfifo(home.file("pipe.jpg").c_str(), 0600);
    fs::create_directory(home.file("folder.jpg"));
    fs::create_symlink("/nowhere/at/all", home.file("broken.jpg"));

    for (const char* name : {"empty.jpg", "text.jpg", "noise.mov", "pipe.jpg", "folder.jpg",
                             "broken.jpg", "missing.jpg"}) {
        const bool movie = std::string_view(name).ends_with(".mov");
        const auto outcome = importFile(home.file(name), movie ? PHAssetResourceTypeVideo
                                                               : PHAssetResourceTypePhoto);
        EXPECT_FALSE(outcome.identifier) << name;
        EXPECT_THAT(outcome.sentence(), testing::EndsWith(".")) << name;
    }
    EXPECT_EQ(importFile(home.file("text.jpg")).error.domain, PHPhotosErrorDomain);
    EXPECT_EQ(importFile(home.file("text.jpg")).error.code, 3302);
    const auto picture = writePicture(home.file("picture.mov"));
    EXPECT_EQ(importFile(picture, PHAssetResourceTypeVideo).error.code, 3302);
    expectNothingKept(home);
}

TEST(Sweeping, LeavesTheFilesOfALivingImporterAndForeignFilesAlone) {
    const ScratchHome home;
    listed();
    const local::UniqueFd library = imaging_test::open(home.library());
    const local::FileStore store(library.get());
    const auto none = [](local::Stored, const std::string&) { return false; };
    const auto all = [](local::Stored, const std::string&) { return true; };
    const auto ready = [] {};
    const local::UniqueFd source = imaging_test::open(writePicture(home.file("a.jpg")));
    const auto originals = [&] { return filesBelow(home.library() / "originals").size(); };
    writeText(home.library() / "incoming/notes.txt", "not ours");
    const auto bringIn = [&](const std::function<void()>& meanwhile) {
        lseek(source.get(), 0, SEEK_SET);
        local::IncomingFile incoming(store, local::Stored::original,
                                     local::uppercaseText(local::randomUuid()), source.get());
        meanwhile();
        incoming.place();
        meanwhile();
        incoming.commitBegins();
    };
    bringIn([&] { store.sweep(none, ready); });
    EXPECT_EQ(originals(), 1u);
    // Its process is as good as dead now, and whether it committed is the catalogue's to say.
    EXPECT_THROW(store.sweep(none, [] { throw local::systemError("no", EROFS); }),
                 local::LibraryError);
    EXPECT_EQ(originals(), 1u);
    store.sweep(all, ready);
    EXPECT_EQ(originals(), 1u);
    EXPECT_THAT(filesBelow(home.library() / "incoming"), ElementsAre("notes.txt"));

    bringIn([] {});
    store.sweep(none, ready);
    EXPECT_EQ(originals(), 1u);
    EXPECT_THAT(filesBelow(home.library() / "incoming"), ElementsAre("notes.txt"));
}

TEST(AssetImport, ProcessesImportAndSweepSideBySide) {
    const ScratchHome home;
    const auto picture = writePicture(home.file("a.jpg"));
    inChild([] { listed(); });
    inProcesses(4, [&](int) {
        const local::UniqueFd library = imaging_test::open(home.library());
        const local::FileStore store(library.get());
        const auto isThere = [](local::Stored, const std::string& name) {
            return assetWith(name.substr(0, 36) + "/L0/001").has_value();
        };
        for (int i = 0; i < 25; ++i) {
            EXPECT_TRUE(importFile(picture).identifier);
            store.sweep(isThere, [] {}); // as a process that opens the library meanwhile
        }
    });
    EXPECT_EQ(listed().count(), 100u);
    EXPECT_EQ(filesBelow(home.library() / "originals").size(), 100u);
    expectConsistent(home);
}

TEST(CaptureDates, FollowTheOffsetOrTheLocalZoneAndMustExist) {
    setenv("TZ", "America/New_York", 1);
    tzset();
    struct Case {
        local::CaptureTime time;
        std::optional<std::int64_t> milliseconds;
    };
    for (const auto& [time, milliseconds] :
         {Case{{1970, 1, 1, 2, 0, 0, 5, 120}, 5},
          Case{{1969, 12, 31, 19, 0, 1, 0, std::nullopt}, 1000},
          Case{{2024, 2, 29, 0, 0, 0, 0, 0}, 1'709'164'800'000},
          Case{{1969, 12, 31, 18, 59, 59, 0, std::nullopt}, -1000},
          Case{{1969, 12, 31, 19, 0, 0, 0, 100'000}, 0}, // an offset that does not exist is none
          Case{{2023, 2, 29, 0, 0, 0}, std::nullopt}, Case{{2023, 13, 1, 0, 0, 0}, std::nullopt},
          Case{{0, 0, 0, 0, 0, 0}, std::nullopt}, Case{{2023, 1, 1, 24, 0, 0}, std::nullopt},
          Case{{2023, 1, 1, 0, 60, 0}, std::nullopt}, Case{{2023, 1, 32, 0, 0, 0}, std::nullopt}})
        EXPECT_EQ(local::millisecondsSince1970(time), milliseconds);
}
