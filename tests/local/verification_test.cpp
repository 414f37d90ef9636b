// Looking at a library's health: each kind of damage is found, and nothing else.
#include "tests/local/kept_library.h"

#include "platform/local/catalogue/catalogue_rules.h"
#include "platform/local/maintenance/verification.h"

namespace {

class VerificationOf : public KeptLibrary {
protected:
    local::Verification verified(const local::VerificationOptions& options = {}) const {
        return local::verifyLibrary(home.library().string(), options);
    }
};

TEST_F(VerificationOf, FilesThatAreGoneChangedTruncatedOrTooMany) {
    const std::string damaged = "damaged " + pathOf(0);
    flipAByte(original(0));
    fs::resize_file(original(1), 10);
    fs::remove(original(2));
    writeText(home.library() / "originals" / "AA" / "stray.jpg", "stray");
    EXPECT_EQ(verified({.content = false}).findings.size(), 3U);
    writeText(original(0), readBytes(original(0)) + "x");
    EXPECT_EQ(verified({.content = false}).findings.size(), 4U) << "by its size alone";
    EXPECT_THAT(faults(),
                UnorderedElementsAre(damaged, "damaged " + pathOf(1), "missing " + pathOf(2),
                                     "unnamed originals/AA/stray.jpg"));
}

TEST_F(VerificationOf, AFolderThatIsNotMountedIsNoLoss) {
    unmountOriginals();
    EXPECT_THAT(faults(), ElementsAre("absent originals"));
    // Nothing is put where it would be hidden later, not even after a new opening.
    closeLibrary();
    inChild(
        [&] { EXPECT_THAT(importFile(home.file("a.jpg")).sentence(), HasSubstr("not mounted")); });
    EXPECT_THAT(filesBelow(home.library() / "originals"), IsEmpty());
    mountOriginals();
    EXPECT_THAT(faults(), IsEmpty());
    EXPECT_TRUE(importFile(home.file("a.jpg")).identifier);
}

TEST_F(VerificationOf, ALibraryMadeBeforeItsStoreWasMarkedIsMarked) {
    const ScratchHome copy;
    fs::create_directories(copy.path() / "Pictures");
    fs::copy(home.library(), copy.library(), fs::copy_options::recursive);
    fs::remove(copy.library() / "originals" / ".photos-kit");
    fs::remove(copy.library() / "renders" / ".photos-kit");
    EXPECT_TRUE(importFile(home.file("a.jpg")).identifier);
    EXPECT_THAT(faultsOf(copy.library(), 4), IsEmpty());
}

TEST_F(VerificationOf, EveryRuleIsBrokenFoundAndMended) {
    const std::string album = newAlbum("Album");
    newFolder("Folder");
    ASSERT_EQ(add(album, identifiers), "");
    runSql(home, "INSERT INTO favorite SELECT created, n FROM asset");
    const std::vector<std::string> breaks{
        "UPDATE collection SET parent = (SELECT n FROM collection WHERE kind = 1), position = 99 "
        "WHERE kind = 2",
        "UPDATE collection SET parent = n WHERE kind = 2",
        "UPDATE asset SET edited = 1 WHERE n = 1",
        "UPDATE asset SET created = 9300000000000001 WHERE n = 1",
        "INSERT INTO discarded_file VALUES ('originals/AB/../../precious')",
        "UPDATE favorite SET created = created - 1 WHERE asset = 2",
        "UPDATE album_member SET listed = 0 WHERE asset = 1",
        "UPDATE collection SET held = 17 WHERE kind = 1",
        "UPDATE collection SET held = 17 WHERE kind = 2",
        "UPDATE library SET listed = 17",
        "UPDATE smart_album SET raw = 17",
        "UPDATE library SET listing_changes = 17",
    };
    ASSERT_EQ(breaks.size(), local::catalogueRules().size());
    ASSERT_THAT(faults(), IsEmpty());
    for (std::size_t i = 0; i < breaks.size(); ++i) {
        runSql(home, breaks[i]);
        EXPECT_GT(sqlInteger(home, local::catalogueRules()[i].count), 0) << breaks[i];
        EXPECT_THAT(faults(), testing::Not(IsEmpty())) << breaks[i];
        for (const local::CatalogueRule& rule : local::catalogueRules())
            if (sqlInteger(home, rule.count) > 0)
                runSql(home, rule.mend);
        EXPECT_THAT(faults(), IsEmpty()) << breaks[i];
    }
    EXPECT_EQ(sqlInteger(home, "SELECT count(*) FROM album_member WHERE listed"), 3);
    EXPECT_EQ(listedIdentifiers().size(), 3U);
}

TEST_F(VerificationOf, ACataloguesPathsNeverLeadOutOfTheLibrary) {
    writeText(home.file("precious"), "mine");
    writeText(home.library() / "precious", "ours");
    closeLibrary();
    runSql(home,
           "INSERT INTO discarded_file VALUES ('../../precious'), ('library.db'),"
           "('originals/../../../precious'), ('originals/..//precious'), ('renders/CD/CD.jpg')");
    const std::string unnamed = "unnamed " + pathOf(1);
    const fs::path name = original(1).filename();
    fs::copy_file(original(1), home.library() / name);
    runSql(home, "UPDATE asset SET stored_as = '/../../" + name.string() + "' WHERE n = 2");
    EXPECT_EQ(listed().count(), 3U);
    EXPECT_EQ(readBytes(home.file("precious")), "mine");
    EXPECT_EQ(readBytes(home.library() / "precious"), "ours");
    EXPECT_EQ(sqlInteger(home, "SELECT count(*) FROM discarded_file"), 4) << "the last one is ours";
    EXPECT_THAT(faults(),
                ElementsAre("disagreement discarded files", "catalogue library.db", unnamed));
}

TEST_F(VerificationOf, WhatAHostDeletesMeanwhileIsNotReported) {
    const auto result =
        verified({.progress = [&](std::int64_t files, std::int64_t, std::int64_t, const auto&) {
            if (files == 1)
                inChild([&] {
                    runSql(home, "DELETE FROM asset WHERE n > 1");
                    listed(); // opens the library, which removes the files
                });
        }});
    EXPECT_TRUE(result.complete);
    EXPECT_THAT(result.findings, IsEmpty());
}

} // namespace
