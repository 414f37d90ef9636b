// How the library comes to be, and what is refused instead of being touched.
#include "tests/local/imaging_support.h"
#include "tests/local/support.h"

#include "platform/local/catalogue/catalogue_schema.h"

#include <sys/mount.h>

#include <map>
#include <thread>

namespace {

long status() {
    return authorizationStatusForAccessLevel(PHAccessLevelReadWrite);
}

std::map<std::string, std::string> contents(const fs::path& folder) {
    std::map<std::string, std::string> bytes;
    for (const std::string& name : filesBelow(folder))
        bytes[name] = readBytes(folder / name);
    return bytes;
}

} // namespace

TEST(LibraryOpening, FirstUseMakesAPrivateLibraryAndGrantsFullAccess) {
    const ScratchHome home;
    fs::create_directories(home.library()); // one that stood there is closed to others
    fs::permissions(home.library(), fs::perms(0775));
    EXPECT_EQ(status(), PHAuthorizationStatusAuthorized);
    EXPECT_EQ(fs::status(home.library()).permissions(), fs::perms(0700));
    EXPECT_EQ(fs::status(home.library() / "library.db").permissions(), fs::perms(0600));
    EXPECT_TRUE(fs::exists(home.library() / ".nomedia"));
    EXPECT_EQ(sqlInteger(home, "PRAGMA application_id"), local::catalogueApplicationId);
    EXPECT_EQ(sqlInteger(home, "PRAGMA user_version"),
              static_cast<std::int64_t>(local::schemaSteps().size()));
}

TEST(LibraryOpening, WhatIsNoLibraryOfThisVersionIsLeftAloneAndExplained) {
    const std::string ours = std::to_string(local::catalogueApplicationId);
    for (const auto& [reason, command] : {
             std::pair<std::string, std::string>{"not a catalogue",
                                                 "head -c 8192 /bin/sh >library.db"},
             {"newer version", "sqlite3 library.db 'PRAGMA application_id = " + ours +
                                   "; PRAGMA user_version = 4711'"},
             {"another program", "sqlite3 library.db 'CREATE TABLE recipe (name)'"},
             {"no catalogue", "mkdir -p originals/AB && echo bytes >originals/AB/picture.jpg"},
         }) {
        SCOPED_TRACE(reason);
        const ScratchHome home;
        fs::create_directories(home.library());
        imaging_test::run(home, "cd Pictures/* && " + command);
        const auto before = contents(home.path());
        EXPECT_EQ(status(), PHAuthorizationStatusRestricted);
        EXPECT_EQ(listed().count(), 0u);
        EXPECT_THAT(importFile("/nowhere.jpg").sentence(), HasSubstr(reason));
        EXPECT_EQ(contents(home.path()), before);
    }
}

TEST(LibraryOpening, IsNotForAProcessForkedFromOneThatHasItOpen) {
    const ScratchHome home;
    const auto picture = writePicture(home.file("a.jpg"));
    ASSERT_EQ(status(), PHAuthorizationStatusAuthorized);
    inChild([&] { EXPECT_THAT(importFile(picture).sentence(), HasSubstr("forked")); });
    EXPECT_TRUE(importFile(picture).identifier);
}

TEST(LibraryOpening, UsesThePicturesFolderOfTheUsersSettingsHoweverLongItsPathIs) {
    const ScratchHome home;
    fs::path deep = home.path();
    for (int i = 0; i < 8; ++i)
        deep /= std::string(200, static_cast<char>('a' + i));
    fs::create_directories(deep / ".config");
    writeText(
        deep / ".config/user-dirs.dirs",
        "# comment\nXDG_MUSIC_DIR=\"$HOME/Musik\"\n XDG_PICTURES_DIR=\"$HOME/Meine Bilder\"\n");
    setenv("HOME", deep.c_str(), 1);
    EXPECT_TRUE(importFile(writePicture(home.file("a.jpg"))).identifier);
    EXPECT_TRUE(fs::exists(deep / "Meine Bilder/Lumatrice Library/library.db"));
    EXPECT_FALSE(fs::exists(deep / "Pictures"));
    EXPECT_EQ(listed().count(), 1u);
}

TEST(LibraryOpening, ALibraryReplacedUnderARunningProcessIsOpenedAnew) {
    const BareLibrary home(3, 0, 1);
    fs::rename(home.library(), home.path() / "elsewhere");
    EXPECT_EQ(listed().count(), 0u);
    fs::remove_all(home.library());
    fs::rename(home.path() / "elsewhere", home.library());
    EXPECT_EQ(listed().count(), 3u);
}

TEST(LibraryOpening, ManyProcessesMayMakeTheLibraryAtOnce) {
    const ScratchHome home;
    inProcesses(12, [](int) { EXPECT_EQ(status(), PHAuthorizationStatusAuthorized); });
    EXPECT_EQ(sqlInteger(home, "SELECT count(*) FROM library"), 1);
}

TEST(LibraryOpening, AReadOnlyLibraryCanBeReadAndSaysSoWhenChanged) {
    // A process that closes the library in order takes SQLite's log with it; one that dies
    // leaves it behind.
    for (const bool closedInOrder : {true, false})
        onSmallDisk("size=4m", [&](const ScratchHome& home, const fs::path& disk) {
            const auto picture = writePicture(home.file("a.jpg"));
            inChild([&] {
                const auto open = listed();
                addBareAssets(home, 5, 0, 1);
            });
            if (closedInOrder)
                runSql(home, "SELECT 1 FROM asset");
            EXPECT_EQ(fs::exists(home.library() / "library.db-wal"), !closedInOrder);
            mountAt(disk, "none", MS_REMOUNT | MS_RDONLY);
            EXPECT_EQ(listedIdentifiers().size(), 5u);
            EXPECT_THAT(importFile(picture).sentence(), HasSubstr("read-only"));
            // Once it can be written to, it is, before long.
            mountAt(disk, "none", MS_REMOUNT);
            for (int i = 0; i < 1200 && !importFile(picture).identifier; ++i)
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
            EXPECT_EQ(listed().count(), 6u);
        });
}

TEST(LibraryOpening, AFullDiskCanBeRead) {
    onSmallDisk("size=1m", [](const ScratchHome& home, const fs::path& disk) {
        const auto picture = writePicture(home.file("a.jpg"));
        inChild([] { status(); });
        addBareAssets(home, 5, 0, 1); // and closes in order, so that SQLite's own files are gone
        std::ofstream(disk / "filler") << std::string(1 << 20, 'x');
        EXPECT_NE(importFile(picture).sentence(), "");
        EXPECT_EQ(listedIdentifiers().size(), 5u);
    });
}

TEST(SchemaSteps, AnOlderCatalogueIsBroughtUpToDateAndKeepsItsRows) {
    const BareLibrary home(4, 1000, 1);
    const local::UniqueFd folder = imaging_test::open(home.library());
    local::CatalogueConnection connection(folder.get(),
                                          local::CatalogueConnection::Mode::readWrite);
    std::vector<const char*> steps(local::schemaSteps().begin(), local::schemaSteps().end());
    const auto released = static_cast<std::int64_t>(steps.size());
    steps.push_back("CREATE TABLE later (x) STRICT"); // refused: a STRICT column needs a type
    EXPECT_THROW(local::prepareSchema(connection, steps), local::LibraryError);
    EXPECT_EQ(sqlInteger(home, "PRAGMA user_version"), released);

    steps.back() = "CREATE TABLE later (x INTEGER) STRICT; INSERT INTO later SELECT n FROM asset";
    local::prepareSchema(connection, steps);
    local::prepareSchema(connection, steps);
    EXPECT_EQ(sqlInteger(home, "PRAGMA user_version"), released + 1);
    EXPECT_EQ(sqlInteger(home, "SELECT count(*) FROM later"), 4);
    EXPECT_THROW(local::prepareSchema(connection, local::schemaSteps()), local::LibraryError);
}

// The number is 10,000 in the deep check.
TEST(LibraryOpening, OpeningAndClosingInTurnsLeavesNothingBehind) {
    const char* const wanted = std::getenv("PHOTOS_KIT_ALTERNATIONS");
    const int turns = wanted ? std::atoi(wanted) : 100;
    const BareLibrary first(3);
    const BareLibrary second(5); // is HOME from here on
    std::ptrdiff_t before = 0;
    for (int turn = 0; turn < turns && !testing::Test::HasFailure(); ++turn) {
        const auto& one = turn % 2 == 0 ? first : second;
        setenv("HOME", one.path().c_str(), 1); // opening the one closes the other
        ASSERT_EQ(listedIdentifiers(), one.all) << turn;
        if (turn % 16 == 0)
            newAlbum("Album"); // so that there is a log to close
        if (turn == 1)
            before = openDescriptors();
    }
    EXPECT_LE(openDescriptors(), before + 2);
    for (const BareLibrary* one : {&first, &second})
        EXPECT_EQ(sqlText(*one, "PRAGMA integrity_check"), "ok");
}
