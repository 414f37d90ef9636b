// Repairs: dry by default, nothing unlinked, nothing taken that somebody is still working on.
#include "tests/local/kept_library.h"

#include "platform/local/maintenance/repair.h"
#include "platform/local/store/file_store.h"

#include <fcntl.h>
#include <sys/file.h>

using local::RepairStep;

namespace {

class RepairOf : public KeptLibrary {
protected:
    // "outcome subject", each.
    std::vector<std::string> repaired(bool apply = true, const std::string& backup = "") const {
        const local::RepairOptions options{.apply = apply, .backup = backup};
        std::vector<std::string> all;
        for (const RepairStep& step : local::repairLibrary(home.library().string(), options).steps)
            all.push_back(local::nameOf(step.outcome) + " " +
                          fs::path(step.subject).filename().string());
        return all;
    }
};

TEST_F(RepairOf, IsDryUnlessItIsWanted) {
    EXPECT_THAT(repaired(), IsEmpty());
    writeText(home.library() / "originals" / "AA" / "stray", "stray");
    runSql(home, "UPDATE library SET listed = 9");
    EXPECT_THAT(repaired(false), UnorderedElementsAre("planned stray", "planned the library"));
    EXPECT_THAT(faults(), testing::SizeIs(2));
    EXPECT_FALSE(fs::exists(home.library() / "quarantine"));
    EXPECT_THAT(repaired(), UnorderedElementsAre("done stray", "done the library"));
    EXPECT_THAT(faults(), IsEmpty());
    EXPECT_EQ(readBytes(home.library() / "quarantine" / "stray"), "stray");
    EXPECT_EQ(sqlInteger(home, "SELECT listed FROM library"), 3);
}

TEST_F(RepairOf, ADamagedFileGoesToQuarantineWhenTheBackupHasItWhole) {
    const std::string bytes = readBytes(original(0));
    fs::copy(home.library(), home.file("backup"), fs::copy_options::recursive);
    fs::resize_file(original(0), 20);
    fs::remove(original(1));
    const std::string name = original(0).filename().string();
    const auto other = "impossible " + original(1).filename().string();
    EXPECT_THAT(repaired(), UnorderedElementsAre("impossible " + name, other));
    EXPECT_EQ(fs::file_size(original(0)), 20U); // better than nothing
    flipAByte(home.file("backup") / pathOf(1)); // damaged as well
    EXPECT_THAT(repaired(true, home.file("backup")), UnorderedElementsAre("done " + name, other));
    EXPECT_FALSE(fs::exists(original(1)));
    flipAByte(home.file("backup") / pathOf(1));
    repaired(true, home.file("backup"));
    EXPECT_THAT(faults(), IsEmpty());
    EXPECT_EQ(readBytes(original(0)), bytes);
    EXPECT_EQ(fs::file_size(home.library() / "quarantine" / name), 20U);
}

TEST_F(RepairOf, AFileOnItsWayInIsLeftAlone) {
    const std::string name = local::uppercaseText(local::randomUuid()) + ".jpg";
    const fs::path marker = home.library() / "incoming" / (name + ".importing");
    writeText(marker, "");
    const int held = open(marker.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(flock(held, LOCK_EX), 0);
    const fs::path placed = home.library() / "originals" / name.substr(0, 2) / name;
    fs::create_directories(placed.parent_path());
    writeText(placed, "just placed, not committed yet");
    EXPECT_THAT(repaired(), IsEmpty());
    EXPECT_TRUE(fs::exists(placed));
    close(held);
}

TEST_F(RepairOf, AbsenceOfEverythingIsNotJudged) {
    unmountOriginals();
    EXPECT_THROW(repaired(), local::LibraryError);
    EXPECT_EQ(sqlInteger(home, "SELECT count(*) FROM asset"), 3);
    EXPECT_FALSE(fs::exists(home.library() / "quarantine"));
}

} // namespace
