// The order of the whole library, its counts and its snapshots, against what the rows say.
#include "tests/local/support.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/change/settings.h"

#include <atomic>
#include <iterator>
#include <random>
#include <sstream>
#include <thread>

namespace {

std::int64_t numberAt(const PHFetchResult<PHAsset>& assets, std::size_t index) {
    return local::recordOf(assets.objectAtIndex(index).value()).n;
}

std::int64_t recentsNumber(std::size_t index) {
    const auto recents = fetchAssetCollectionsWithType(PHAssetCollectionTypeSmartAlbum, 209);
    return numberAt(fetchAssetsInAssetCollection(*recents.objectAtIndex(0), nullptr), index);
}

std::vector<std::int64_t> trueOrder(const ScratchHome& home) {
    std::istringstream text(sqlText(
        home, "SELECT group_concat(n, ' ') FROM (SELECT n FROM asset NOT INDEXED WHERE hidden = 0 "
              "AND trashed_at IS NULL ORDER BY created DESC, n DESC)"));
    return {std::istream_iterator<std::int64_t>(text), {}};
}

// So many from a place on, or fewer where the list ends before.
void expectTruth(const ScratchHome& home, std::size_t start = 0, std::size_t count = SIZE_MAX) {
    const auto truth = trueOrder(home);
    const auto assets = listed();
    ASSERT_EQ(assets.count(), truth.size());
    const std::size_t end = start + std::min(count, truth.size() - start);
    for (std::size_t i = start; i < end; ++i)
        ASSERT_EQ(numberAt(assets, i), truth[i]) << i;
}

} // namespace

TEST(AssetListing, AnyPageIsRightWhateverChangesBetweenPages) {
    const BareLibrary home(3000, 1'000'000, 10);
    std::mt19937 random(7);
    for (int round = 0; round < 60; ++round) {
        const std::string n = std::to_string(random() % 3500);
        const std::string when = std::to_string(900'000 + random() % 200'000);
        const std::vector<std::string> changes{
            "DELETE FROM asset WHERE n BETWEEN " + n + " AND " + n + " + 400",
            "DELETE FROM asset WHERE n BETWEEN " + n + " AND " + n + " + 5",
            "UPDATE asset SET hidden = 1 - hidden WHERE n % 7 = " + n + " % 7",
            "UPDATE asset SET created = " + when + " WHERE n % 50 = " + n + " % 50",
            "UPDATE asset SET trashed_at = iif(trashed_at IS NULL, 5, NULL) WHERE n % 11 = " + n +
                " % 11",
        };
        const std::size_t kind = random() % 8; // at times none
        if (kind < changes.size())
            runSql(home, changes[kind]);
        const auto created = static_cast<std::int64_t>(random() % 1'100'000);
        if (kind == 1) // so few that the offsets are carried on one by one
            addBareAssets(home, 3, created, 1000);
        if (kind == 5) // many at one place, so that a stretch grows and is cut
            addBareAssets(home, 700, created, 0);
        const auto truth = trueOrder(home);
        ASSERT_EQ(recentsNumber(truth.size() - 1), truth.back());
        expectTruth(home, random() % (truth.size() + 1), 100);
        ASSERT_FALSE(HasFailure()) << "round " << round;
    }
    expectTruth(home);
    expectConsistent(home);
}

TEST(AssetListing, StretchesGrowAndEmptyLittleByLittle) {
    const BareLibrary home(1500, 0, 10);
    for (int round = 0; round < 136; ++round) {
        if (round < 45)
            addBareAssets(home, 10, 20'000 + round * 100, 1);
        else if (round < 135)
            runSql(home, "DELETE FROM asset WHERE n IN (SELECT n FROM asset ORDER BY created DESC "
                         "LIMIT 12)");
        else
            addBareAssets(home, 1, 90'000, 1);
        expectTruth(home, 0, 1);
        expectTruth(home, 700, 20);
        ASSERT_FALSE(HasFailure()) << "round " << round;
    }
}

TEST(AssetListing, MarkersAreMadeAnewWhenTheLogNoLongerReachesBackOrTheCatalogueWasPutBack) {
    const BareLibrary home(2000, 0, 1);
    expectTruth(home, 1500, 1);
    // An older one, whose numbers go back; and then one that has gone on otherwise since.
    runSql(home, "DELETE FROM asset WHERE created < 100;"
                 "DELETE FROM listing_change WHERE seq > 1000;"
                 "UPDATE library SET listing_changes = 1000");
    expectTruth(home, 1850, 1);
    EXPECT_EQ(recentsNumber(1850), trueOrder(home)[1850]);
    runSql(home, "UPDATE library SET listing_changes = 990;"
                 "DELETE FROM listing_change WHERE seq > 990;"
                 "DELETE FROM asset WHERE created BETWEEN 1000 AND 1039");
    expectTruth(home, 1820, 1);
    addBareAssets(home, 500, 100, 1);
    runSql(home, "DELETE FROM listing_change WHERE seq < (SELECT max(seq) FROM listing_change)");
    expectTruth(home);
}

TEST(AssetListing, AFetchIsASnapshot) {
    const BareLibrary home(10, 0, 1);
    const auto before = listed();
    const std::string first = before.objectAtIndex(0)->localIdentifier;
    addBareAssets(home, 5, 1000, 1);
    runSql(home, "DELETE FROM asset WHERE created < 5");
    EXPECT_EQ(before.count(), 10u);
    EXPECT_EQ(before.objectAtIndex(9)->creationDate, 0.0);
    EXPECT_EQ(before.objectAtIndex(0)->localIdentifier, first);
    EXPECT_FALSE(before.objectAtIndex(10));
    EXPECT_EQ(listed().count(), 10u);
}

TEST(AssetListing, EveryThreadSeesAWholeOrderWhileOthersWrite) {
    const BareLibrary home(2000, 0, 5);
    std::atomic<int> walks = 0;
    std::vector<std::jthread> readers;
    for (unsigned seed = 0; seed < 4; ++seed) {
        readers.emplace_back([&, seed](const std::stop_token& stop) {
            std::mt19937 random(seed);
            for (; !stop.stop_requested(); ++walks) {
                const auto assets = listed();
                const std::size_t start = random() % assets.count();
                const std::size_t end = std::min(start + 50, assets.count());
                double previous = 1e300;
                for (std::size_t at = start; at < end; ++at) {
                    const auto asset = assets.objectAtIndex(at);
                    ASSERT_TRUE(asset) << at << " of " << assets.count();
                    ASSERT_LE(*asset->creationDate, previous);
                    previous = *asset->creationDate;
                }
                ASSERT_FALSE(assets.objectAtIndex(assets.count()));
            }
        });
    }
    for (int i = 0; i < 150; ++i) {
        addBareAssets(home, 7, i * 13, 1);
        runSql(home, "DELETE FROM asset WHERE n IN (SELECT n FROM asset ORDER BY n LIMIT 3)");
    }
    readers.clear(); // asks them to end, and waits
    EXPECT_GT(walks, 4);
    EXPECT_EQ(sqlInteger(home, "SELECT listed FROM library"),
              sqlInteger(home, "SELECT count(*) FROM asset"));
}

TEST(AssetListing, HiddenAssetsAreFoundByIdentifierOnlyAndTrashedOnesNowhere) {
    const BareLibrary home(3);
    const auto& all = home.all;
    runSql(home, "UPDATE asset SET hidden = 1 WHERE created = 2000;"
                 "UPDATE asset SET trashed_at = 1 WHERE created = 1000;"
                 "INSERT INTO favorite SELECT created, n FROM asset WHERE created >= 2000");
    EXPECT_EQ(listedIdentifiers(), std::vector{all[0]});
    EXPECT_EQ(fetchAssetsWithOptions({}).count(), 1u);
    EXPECT_TRUE(listed().objectAtIndex(0)->isFavorite && !listed().objectAtIndex(0)->isHidden);
    EXPECT_TRUE(assetWith(all[1])->isHidden);
    EXPECT_FALSE(assetWith(all[2]));
    const auto some = {all[0], std::string("nobody"), all[1], all[0], all[2]};
    EXPECT_EQ(fetchAssetsWithLocalIdentifiers(some).count(), 2u);
}

TEST(Access, DecidesWhatIsSeenAndChanged) {
    const BareLibrary home(4);
    const auto& all = home.all;
    const auto picture = writePicture(home.file("mine.jpg"));
    local::limitAccess({all[1], all[3]});
    EXPECT_EQ(authorizationStatusForAccessLevel(PHAccessLevelReadWrite), 4);
    EXPECT_EQ(listedIdentifiers(), (std::vector{all[1], all[3]}));
    EXPECT_FALSE(assetWith(all[0]));
    EXPECT_TRUE(assetWith(importFile(picture).identifier.value()));
    EXPECT_ANY_THROW(local::limitAccess({all[0], "unknown"}));
    EXPECT_EQ(listed().count(), 3u) << "refused as a whole";
    for (const char* refused : {"1", "2"}) {
        runSql(home, std::string("UPDATE library SET access = ") + refused);
        EXPECT_EQ(listed().count(), 0u);
        EXPECT_FALSE(assetWith(all[1]));
        EXPECT_EQ(importFile(picture).error.code, 3311);
    }
    local::grantFullAccess();
    EXPECT_EQ(listed().count(), 5u);
    EXPECT_EQ(local::readSettings().limitedChoice, 0u);
}

TEST(CreationDates, KeepEveryMillisecond) {
    std::mt19937_64 random(3);
    for (int i = 0; i < 200'000; ++i) {
        const auto ms = static_cast<std::int64_t>(random() % 8'000'000'000'000) - 4'000'000'000'000;
        ASSERT_EQ(static_cast<std::int64_t>(local::exactSeconds(ms) * 1000.0), ms);
    }
    EXPECT_EQ(local::exactSeconds(0), 0.0);
}
