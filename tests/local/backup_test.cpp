// Backups: whole, incremental, kept through kills and full disks, and never made of the wrong
// thing.
#include "tests/local/kept_library.h"

#include "platform/local/change/trash.h"
#include "platform/local/maintenance/backup.h"
#include "platform/local/maintenance/library_reader.h"

#include <unistd.h>

#include <limits>
#include <thread>

using local::Backup;
using local::BackupOptions;

namespace {

class BackupOf : public KeptLibrary {
protected:
    const fs::path target = home.file("backup");

    Backup backUp(const BackupOptions& options = {}) const {
        Backup backup = local::backUpLibrary(home.library().string(), target.string(), options);
        EXPECT_EQ(backup.complete, !options.stop);
        return backup;
    }

    std::string refusal(const fs::path& folder) const {
        try {
            local::backUpLibrary(home.library().string(), folder.string(), {});
        } catch (const local::LibraryError& error) {
            return error.what();
        }
        return "";
    }

    void deleteForGood(const std::string& where) const {
        runSql(home, "UPDATE asset SET trashed_at = 1 WHERE " + where);
        local::emptyTrash(std::numeric_limits<std::int64_t>::max());
    }
};

TEST_F(BackupOf, IsALibraryThatOpensInTheOnesPlace) {
    EXPECT_EQ(backUp().copied, 3);
    EXPECT_THAT(faultsOf(target, 3), IsEmpty());
    EXPECT_EQ(fs::status(target).permissions(), fs::perms::owner_all);
    const auto before = listedIdentifiers();
    const ScratchHome other;
    fs::create_directories(other.path() / "Pictures");
    fs::copy(target, other.library(), fs::copy_options::recursive);
    EXPECT_EQ(listedIdentifiers(), before);
    EXPECT_TRUE(importFile(home.file("a.jpg")).identifier);
    EXPECT_THAT(faultsOf(other.library(), 4), IsEmpty());
}

TEST_F(BackupOf, CopiesOnlyWhatIsNewAndSetsAsideWhatIsGone) {
    backUp();
    const std::string gone = storedAs(home, identifiers[0]);
    import("d");
    deleteForGood("n = 1");
    const Backup second = backUp();
    EXPECT_EQ(second.copied, 1);
    EXPECT_EQ(second.present, 2);
    EXPECT_EQ(second.setAside, 1);
    EXPECT_THAT(faultsOf(target, 3), IsEmpty());
    EXPECT_THAT(filesBelow(target / "quarantine"), ElementsAre(gone));
    const Backup third = backUp();
    EXPECT_EQ(third.present, 3);
    EXPECT_EQ(third.copied + third.setAside, 0);
    import("e");
    BackupOptions options;
    options.link = true;
    EXPECT_EQ(backUp(options).linked, 1);
    EXPECT_EQ(fs::hard_link_count(target / pathOf(4)), 2U);
}

TEST_F(BackupOf, KeepsGoodFilesAndNamesThoseThatNobodyHas) {
    backUp();
    import("d");
    import("e");
    flipAByte(home.library() / pathOf(0));
    flipAByte(home.library() / pathOf(3));
    fs::remove(home.library() / pathOf(4));
    EXPECT_THAT(named(backUp().findings),
                ElementsAre("damaged " + pathOf(3), "missing " + pathOf(4)));
    const auto lacksBoth = ElementsAre("missing " + pathOf(3), "missing " + pathOf(4));
    EXPECT_THAT(faultsOf(target, 5), lacksBoth);
    EXPECT_EQ(filesBelow(target / "quarantine").size(), 1U);
    // Damage in the backup is found when it is looked for, and mended from the library.
    flipAByte(target / pathOf(1));
    EXPECT_EQ(backUp().copied, 0);
    BackupOptions options;
    options.check = true;
    EXPECT_EQ(backUp(options).copied, 1);
    EXPECT_THAT(faultsOf(target, 5), lacksBoth);
    // Damage in both is not passed over.
    flipAByte(target / pathOf(0));
    EXPECT_EQ(backUp(options).findings.size(), 3U);
}

TEST_F(BackupOf, GoesOnlyWhereItBelongs) {
    const fs::path library = home.library();
    EXPECT_THAT(refusal(library), HasSubstr("inside the library"));
    EXPECT_THAT(refusal(library / "originals" / "new"), HasSubstr("inside the library"));
    EXPECT_FALSE(fs::exists(library / "originals" / "new"));
    EXPECT_THAT(refusal(home.path() / "Pictures"), HasSubstr("lies inside"));
    EXPECT_THAT(refusal(home.file("no/such/place")), HasSubstr("could not be made"));
    fs::create_directory(target);
    writeText(target / "diary.txt", "dear");
    EXPECT_THAT(refusal(target), HasSubstr("something else"));
    EXPECT_THAT(filesBelow(target), ElementsAre("diary.txt"));
    fs::remove(target / "diary.txt");
    backUp();
    fs::remove(target / "backup.state");
    EXPECT_THAT(refusal(target), HasSubstr("of its own"));
}

TEST_F(BackupOf, OneThatWasUsedAsALibraryIsNotWrittenTo) {
    runSql(home, "INSERT INTO discarded_file VALUES ('originals/AA/gone.jpg')");
    backUp();
    const ScratchHome other;
    fs::create_directories(other.path() / "Pictures");
    fs::rename(target, other.library());
    inChild([] { EXPECT_EQ(listedIdentifiers().size(), 3U); });
    EXPECT_EQ(refusal(other.library()), ""); // it was only looked at
    inChild([&] { EXPECT_TRUE(importFile(home.file("a.jpg")).identifier); });
    EXPECT_THAT(refusal(other.library()), HasSubstr("has changed"));
    runSql(other, "PRAGMA wal_checkpoint(TRUNCATE)");
    EXPECT_THAT(refusal(other.library()), HasSubstr("has changed"));
}

TEST_F(BackupOf, AnEmptiedOrOtherLibraryDoesNotReplaceIt) {
    backUp();
    deleteForGood("1");
    EXPECT_THAT(refusal(target), HasSubstr("another one"));
    EXPECT_THAT(faultsOf(target, 3), IsEmpty());
    BackupOptions options;
    options.replace = true;
    EXPECT_EQ(backUp(options).setAside, 3);
    EXPECT_THAT(faultsOf(target, 0), IsEmpty());
}

TEST_F(BackupOf, StoppedTheEarlierOneStaysAndTheNextGoesOn) {
    backUp();
    for (const char* name : {"d", "e", "f"})
        import(name);
    BackupOptions options;
    int looks = 0;
    options.stop = [&] { return ++looks > 8; };
    backUp(options);
    EXPECT_EQ(local::verifyLibrary(target.string(), {}).files, 3);
    EXPECT_LT(backUp().copied, 3);
    EXPECT_THAT(faultsOf(target, 6), IsEmpty());
}

TEST_F(BackupOf, ADamagedOrUnmountedLibraryLeavesIt) {
    backUp();
    unmountOriginals();
    EXPECT_THAT(refusal(target), HasSubstr("not mounted"));
    mountOriginals();
    EXPECT_EQ(refusal(target), "");
    runSql(home, "PRAGMA wal_checkpoint(TRUNCATE)");
    const auto page =
        sqlInteger(home, "SELECT rootpage FROM sqlite_schema WHERE name = 'asset_added'");
    inChild([&] { // closing the file drops the process's locks
        std::fstream catalogue(home.library() / "library.db",
                               std::ios::in | std::ios::out | std::ios::binary);
        catalogue.seekp((page - 1) * 4096);
        catalogue << std::string(4096, 'x');
    });
    EXPECT_THAT(refusal(target), HasSubstr("catalogue is damaged"));
    EXPECT_THAT(faultsOf(target, 3), IsEmpty());
}

TEST_F(BackupOf, IsNotReplacedUnderSomebodyWhoHasItOpen) {
    backUp();
    import("d");
    {
        const OtherProcess reader([&] {
            local::LibraryReader open(target.string());
            open.countFiles();
            writeText(home.file("is open"), "");
            pause();
        });
        while (!fs::exists(home.file("is open")))
            std::this_thread::yield();
        EXPECT_THAT(refusal(target), HasSubstr("has the backup open"));
    }
    EXPECT_EQ(local::verifyLibrary(target.string(), {}).files, 3);
    EXPECT_EQ(backUp().copied, 0); // the file went in before
    EXPECT_THAT(faultsOf(target, 4), IsEmpty());
}

TEST_F(BackupOf, AnAssetThatGoesAfterItsRowWasReadBeginsTheMomentAnew) {
    int passes = 0;
    BackupOptions options;
    options.progress = [&](std::int64_t file, std::int64_t) {
        if (file != 0 || ++passes != 2)
            return;
        // As if the last one had come after the first pass and gone again.
        const std::string path = pathOf(2);
        deleteForGood("n = 3");
        fs::remove(target / path);
    };
    const Backup backup = backUp(options);
    EXPECT_EQ(passes, 3);
    EXPECT_THAT(named(backup.findings), IsEmpty());
    EXPECT_THAT(faultsOf(target, 2), IsEmpty());
}

TEST_F(BackupOf, WhileAnotherProcessImportsAndDeletes) {
    const auto picture = home.file("a.jpg");
    closeLibrary();
    const OtherProcess busy([&] {
        for (int i = 0;; ++i) {
            importFile(picture);
            if (i % 3 == 2)
                deleteForGood("n = (SELECT max(n) FROM asset)");
        }
    });
    for (int i = 0; i < 10; ++i) {
        const Backup backup = backUp();
        EXPECT_THAT(named(backup.findings), IsEmpty());
        EXPECT_THAT(faultsOf(target, backup.copied + backup.present), IsEmpty());
    }
}

} // namespace
