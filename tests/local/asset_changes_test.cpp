// Marks, deletion, the trash, and the question before a deletion.
#include "tests/local/support.h"

#include "platform/local/change/settings.h"
#include "platform/local/change/trash.h"

#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <limits>

namespace {

using Mark = void (*)(const PHAssetChangeRequest&, bool);

std::string mark(const std::vector<std::string>& identifiers, Mark set, bool value) {
    const auto assets = walked(fetchAssetsWithLocalIdentifiers(identifiers));
    return change([&] {
        for (const PHAsset& asset : assets)
            set(changeRequestForAsset(asset), value);
    });
}

std::string remove(const std::vector<std::string>& identifiers) {
    return change([&] { deleteAssets(fetchAssetsWithLocalIdentifiers(identifiers)); });
}

// From here on this process cannot start another thread; it may no longer be root's.
void forbidThreads(const ScratchHome& home) {
    if (geteuid() == 0) { // whom the limit does not bind
        constexpr uid_t nobody = 65534;
        lchown(home.path().c_str(), nobody, nobody);
        for (const auto& entry : fs::recursive_directory_iterator(home.path()))
            EXPECT_EQ(lchown(entry.path().c_str(), nobody, nobody), 0);
        EXPECT_EQ(setresuid(nobody, nobody, nobody), 0);
    }
    const rlimit none{1, 1};
    EXPECT_EQ(setrlimit(RLIMIT_NPROC, &none), 0);
}

constexpr long favorites = 203;
constexpr long hidden = 205;

std::size_t countOf(long smartAlbum) {
    const auto found = fetchAssetCollectionsWithType(PHAssetCollectionTypeSmartAlbum, smartAlbum);
    return fetchAssetsInAssetCollection(*found.objectAtIndex(0), nullptr).count();
}

} // namespace

TEST(AssetMarks, AreSetOnManyAssetsAndCountedInTheSmartAlbums) {
    const BareLibrary home(400);
    const std::vector<std::string> many(home.all.begin(), home.all.begin() + 200);
    ASSERT_EQ(mark(many, setFavorite, true), "");
    ASSERT_EQ(mark({many[0], many[1]}, setFavorite, true), ""); // already so
    EXPECT_EQ(countOf(favorites), 200u);
    ASSERT_EQ(mark({many[0], many[1], many[1]}, setFavorite, false), "");
    EXPECT_EQ(countOf(favorites), 198u);
    EXPECT_FALSE(assetWith(many[0])->isFavorite);
    EXPECT_TRUE(assetWith(many[2])->isFavorite);

    expectDone([&] { // all that is asked in one block, in its order
        const auto request = changeRequestForAsset(*assetWith(many[4]));
        setFavorite(request, false);
        setHidden(request, true);
        setFavorite(request, true);
    });
    ASSERT_EQ(mark(many, setHidden, true), "");
    EXPECT_EQ(listed().count(), 200u);
    EXPECT_EQ(countOf(hidden), 200u);
    EXPECT_EQ(countOf(favorites), 0u);
    EXPECT_TRUE(assetWith(many[2])->isHidden);
    EXPECT_TRUE(assetWith(many[2])->isFavorite) << "one mark leaves the other alone";
    ASSERT_EQ(mark(many, setHidden, false), "");
    EXPECT_EQ(listed().count(), 400u);
    EXPECT_EQ(countOf(favorites), 198u);
}

// Many assets are read when somebody walks them, here within the change.
TEST(AssetMarks, AreSetOnAllOrNone) {
    const BareLibrary home(300);
    ASSERT_EQ(mark({home.all[0]}, setHidden, true), ""); // its connection is kept
    const auto read = fetchAssetsWithLocalIdentifiers(home.all);
    const auto markAll = [&] {
        return change([&] {
            for (std::size_t i = 0; i < read.count(); ++i) {
                if (const auto asset = read.objectAtIndex(i))
                    setFavorite(changeRequestForAsset(*asset), true);
            }
        });
    };
    {
        const auto other = listed();
        const auto exhausted = exhaustDescriptors();
        EXPECT_NE(markAll(), "") << "one cannot be read";
        EXPECT_NE(change([&] { setFavorite({}, fetchAssetsWithOptions({}).count()); }), "");
    }
    EXPECT_EQ(countOf(favorites), 0u);
    EXPECT_EQ(markAll(), "");
    EXPECT_EQ(countOf(favorites), 299u);
    runSql(home, "UPDATE asset SET trashed_at = added + 1 WHERE n = 290; DELETE FROM favorite");
    EXPECT_THAT(markAll(), HasSubstr("no longer exists"));
    EXPECT_EQ(countOf(favorites), 0u);
}

TEST(AssetMarks, AreDoneOnceCommittedWhateverComesAfterwards) {
    const ScratchHome home;
    inChild([&] {
        listed();
        addBareAssets(home, 70'000, 1000, 1000); // so that the log is long
        const auto identifier = listed().objectAtIndex(0)->localIdentifier;
        forbidThreads(home);
        EXPECT_EQ(mark({identifier}, setFavorite, true), "");
    });
    EXPECT_EQ(countOf(favorites), 1u);
    EXPECT_LE(sqlInteger(home, "SELECT count(*) FROM listing_change"), 65'536);
}

TEST(Trash, KeepsAssetsWholeUntilItIsEmptied) {
    const ScratchHome home;
    const auto kept = importFile(writePicture(home.file("a.jpg"))).identifier;
    const auto gone = importFile(writePicture(home.file("b.jpg"), 64, 48, 1)).identifier;
    ASSERT_EQ(mark({*gone}, setFavorite, true), "");
    const fs::path original = originalOf(home, *gone);
    ASSERT_EQ(remove({*gone, "unknown/L0/001"}), "");
    EXPECT_FALSE(assetWith(*gone)) << "deleted ones are nowhere";
    EXPECT_EQ(countOf(favorites), 0u);
    EXPECT_EQ(local::restoreFromTrash({*gone, *kept, "nonsense"}), 1u);
    EXPECT_TRUE(assetWith(*gone)->isFavorite);

    ASSERT_EQ(remove({*gone}), "");
    const auto deleted = local::listTrash()[0].trashedAt;
    EXPECT_EQ(local::emptyTrash(deleted), 0u) << "what is older alone";
    runSql(home, "UPDATE asset SET trashed_at = 5 WHERE trashed_at"); // by a clock at 1970
    local::dateImpossibleDeletions();
    EXPECT_EQ(local::emptyTrash(1'600'000'000'000), 0u);
    EXPECT_TRUE(fs::exists(original));
    const auto scaled = [&](const std::string& name) { // as if somebody had looked at it
        const std::string hash =
            sqlText(home, "SELECT lower(hex(hash)) FROM asset WHERE filename = '" + name + "'");
        const fs::path folder = home.library() / "derivatives" / hash.substr(0, 2);
        fs::create_directories(folder);
        return writeText(folder / (hash + ".jpg"), "scaled");
    };
    ASSERT_EQ(remove({*importFile(home.file("a.jpg")).identifier}), ""); // the same content twice
    const fs::path scaledAlone = scaled("b.jpg");
    const fs::path scaledShared = scaled("a.jpg");
    EXPECT_EQ(local::emptyTrash(std::numeric_limits<std::int64_t>::max()), 2u);
    EXPECT_FALSE(fs::exists(original));
    EXPECT_FALSE(fs::exists(scaledAlone)) << "nothing of its picture stays";
    EXPECT_TRUE(fs::exists(scaledShared)) << "another asset has the same content";
    EXPECT_EQ(sqlInteger(home, "SELECT count(*) FROM discarded_file"), 0);
    EXPECT_EQ(sqlInteger(home, "SELECT count(*) FROM favorite"), 0);
    EXPECT_EQ(local::restoreFromTrash({*gone}), 0u);
    EXPECT_THAT(listedIdentifiers(), ElementsAre(*kept));
}

TEST(DeletionQuestion, IsAskedWhereTheSettingWantsIt) {
    const BareLibrary home(2);
    local::setConfirmDeletions(true);
    setenv("PATH", (home.file("bin").string() + ":" + getenv("PATH")).c_str(), 1);
    fs::create_directory(home.file("bin"));
    const std::pair<std::string, std::optional<long>> answers[] = {
        // and the error's code
        {"echo \"$@\" > \"$HOME/asked\"; exit 1", PHPhotosErrorUserCancelled},
        {"exit 255", 0},
        {"exit 0", std::nullopt}};
    for (const auto& [script, code] : answers) {
        const auto dialog = writeText(home.file("bin/zenity"), "#!/bin/sh\n" + script + "\n");
        fs::permissions(dialog, fs::perms::owner_all);
        const auto before = std::signal(SIGCHLD, code ? SIG_DFL : SIG_IGN); // as hosts may
        std::optional<NSError> error;
        const auto ask = [&] { deleteAssets(fetchAssetsWithLocalIdentifiers({home.all[0]})); };
        EXPECT_EQ(performChangesAndWait(ask, error), !code) << script;
        std::signal(SIGCHLD, before);
        EXPECT_EQ(listed().count(), code ? 2u : 1u) << script;
        EXPECT_EQ(error ? std::optional(error->code) : std::nullopt, code) << script;
    }
    EXPECT_THAT(readBytes(home.file("asked")), HasSubstr("--question"));
    local::setConfirmDeletions(false);
    EXPECT_EQ(remove({home.all[1]}), "");
}
