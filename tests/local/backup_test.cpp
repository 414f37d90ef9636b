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

    static std::string counts(const Backup& backup) {
        return std::to_string(backup.copied) + " copied, " + std::to_string(backup.present) +
               " present, " + std::to_string(backup.setAside) + " set aside";
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
    const ScratchHome other;
    fs::create_directory(other.file("Pictures"));
    fs::copy(target, other.library(), fs::copy_options::recursive);
    EXPECT_THAT(listedIdentifiers(), testing::UnorderedElementsAreArray(identifiers));
    EXPECT_TRUE(importFile(home.file("a.jpg")).identifier);
    EXPECT_THAT(faultsOf(other.library(), 4), IsEmpty());
}

TEST_F(BackupOf, CopiesOnlyWhatIsNewAndSetsAsideWhatIsGone) {
    backUp();
    const std::string gone = original(0).filename();
    import("d");
    deleteForGood("n = 1");
    EXPECT_EQ(counts(backUp()), "1 copied, 2 present, 1 set aside");
    EXPECT_THAT(faultsOf(target, 3), IsEmpty());
    EXPECT_THAT(filesBelow(target / "quarantine"), ElementsAre(gone));
    EXPECT_EQ(counts(backUp()), "0 copied, 3 present, 0 set aside");
    import("e");
    EXPECT_EQ(backUp({.link = true}).linked, 1);
    EXPECT_EQ(fs::hard_link_count(target / pathOf(4)), 2U);
    deleteForGood("1");
    EXPECT_THAT(refusal(target), HasSubstr("another one")) << "or an emptied one";
    EXPECT_THAT(faultsOf(target, 4), IsEmpty());
    EXPECT_EQ(counts(backUp({.replace = true})), "0 copied, 0 present, 4 set aside");
    EXPECT_THAT(faultsOf(target, 0), IsEmpty());
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
    EXPECT_EQ(backUp({.check = true}).copied, 1);
    EXPECT_THAT(faultsOf(target, 5), lacksBoth);
    // Damage in both is not passed over.
    flipAByte(target / pathOf(0));
    EXPECT_EQ(backUp({.check = true}).findings.size(), 3U);
}

TEST_F(BackupOf, GoesOnlyWhereItBelongs) {
    const fs::path inside = home.library() / "originals" / "new";
    EXPECT_THAT(refusal(home.library()), HasSubstr("inside the library"));
    EXPECT_THAT(refusal(inside), HasSubstr("inside the library"));
    EXPECT_FALSE(fs::exists(inside));
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
    fs::create_directory(other.file("Pictures"));
    fs::rename(target, other.library());
    inChild([] { EXPECT_EQ(listedIdentifiers().size(), 3U); });
    EXPECT_EQ(refusal(other.library()), ""); // it was only looked at
    inChild([&] { EXPECT_TRUE(importFile(home.file("a.jpg")).identifier); });
    EXPECT_THAT(refusal(other.library()), HasSubstr("has changed"));
    runSql(other, "PRAGMA wal_checkpoint(TRUNCATE)");
    EXPECT_THAT(refusal(other.library()), HasSubstr("has changed"));
}

TEST_F(BackupOf, StoppedTheEarlierOneStaysAndTheNextGoesOn) {
    backUp();
    for (const char* name : {"d", "e", "f"})
        import(name);
    int looks = 0;
    backUp({.stop = [&] { return ++looks > 8; }});
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
        std::fstream catalogue(home.library() / "library.db", std::ios::in | std::ios::out);
        catalogue.seekp((page - 1) * 4096);
        catalogue << std::string(4096, 'x');
    });
    EXPECT_THAT(faults().at(0), testing::StartsWith("catalogue "));
    EXPECT_THAT(refusal(target), HasSubstr("catalogue is damaged"));
    EXPECT_THAT(faultsOf(target, 3), IsEmpty());
}

TEST_F(BackupOf, IsNotReplacedUnderSomebodyWhoHasItOpen) {
    backUp();
    import("d");
    {
        const auto reader = otherProcess([&] {
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
    const Backup backup = backUp({.progress = [&](std::int64_t file, std::int64_t) {
        if (file != 0 || ++passes != 2)
            return;
        // As if the last one had come after the first pass and gone again.
        const std::string path = pathOf(2);
        deleteForGood("n = 3");
        fs::remove(target / path);
    }});
    EXPECT_EQ(passes, 3);
    EXPECT_THAT(named(backup.findings), IsEmpty());
    EXPECT_THAT(faultsOf(target, 2), IsEmpty());
}

TEST_F(BackupOf, WhileAnotherProcessImportsAndDeletes) {
    const auto picture = home.file("a.jpg");
    closeLibrary();
    const auto busy = otherProcess([&] {
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
