// The order of the whole library, its counts and its snapshots, against what the rows say.
#include "tests/local/support.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/change/settings.h"

#include <atomic>
#include <random>
#include <sstream>
#include <thread>

using platform::PHAsset;

namespace {

std::vector<std::int64_t> listedNumbers(std::size_t start, std::size_t end) {
    std::vector<std::int64_t> numbers;
    const auto assets = listed();
    for (std::size_t i = start; i < std::min(end, assets.count()); ++i)
        numbers.push_back(local::recordOf(assets.objectAtIndex(i).value()).n);
    return numbers;
}

std::int64_t recentsNumber(std::size_t index) {
    const auto recents =
        platform::fetchAssetCollectionsWithType(platform::PHAssetCollectionTypeSmartAlbum, 209);
    const auto assets =
        platform::fetchAssetsInAssetCollection(recents.objectAtIndex(0).value(), nullptr);
    return local::recordOf(assets.objectAtIndex(index).value()).n;
}

std::vector<std::int64_t> trueOrder(const ScratchHome& home) {
    std::vector<std::int64_t> numbers;
    std::istringstream text(sqlText(
        home, "SELECT group_concat(n, ' ') FROM (SELECT n FROM asset NOT INDEXED WHERE hidden = 0 "
              "AND trashed_at IS NULL ORDER BY created DESC, n DESC)"));
    for (std::int64_t n = 0; text >> n;)
        numbers.push_back(n);
    return numbers;
}

} // namespace

TEST(AssetListing, AnyPageIsRightWhateverChangesBetweenPages) {
    const BareLibrary home(3000, 1'000'000, 10);
    std::mt19937 random(7);
    for (int round = 0; round < 60; ++round) {
        const std::string n = std::to_string(random() % 3500);
        const std::string when = std::to_string(900'000 + random() % 200'000);
        switch (random() % 8) {
        case 0: // many at one place, so that a stretch grows and is cut
            addBareAssets(home, 700, static_cast<std::int64_t>(random() % 1'100'000), 0);
            break;
        case 1:
            runSql(home, "DELETE FROM asset WHERE n BETWEEN " + n + " AND " + n + " + 400");
            break;
        case 2:
            runSql(home, "UPDATE asset SET hidden = 1 - hidden WHERE n % 7 = " + n + " % 7");
            break;
        case 3:
            runSql(home, "UPDATE asset SET created = " + when + " WHERE n % 50 = " + n + " % 50");
            break;
        case 4:
            runSql(home, "UPDATE asset SET trashed_at = iif(trashed_at IS NULL, 5, NULL) "
                         "WHERE n % 11 = " +
                             n + " % 11");
            break;
        case 5: // so few that the offsets are carried on one by one
        case 6:
            runSql(home, "DELETE FROM asset WHERE n BETWEEN " + n + " AND " + n + " + 5");
            addBareAssets(home, 3, static_cast<std::int64_t>(random() % 1'100'000), 1000);
            break;
        default:
            break;
        }
        const auto truth = trueOrder(home);
        ASSERT_EQ(listed().count(), truth.size());
        ASSERT_EQ(recentsNumber(truth.size() - 1), truth.back());
        const std::size_t start = random() % (truth.size() + 1);
        const std::size_t end = std::min(truth.size(), start + 100);
        ASSERT_EQ(listedNumbers(start, end),
                  std::vector(truth.begin() + static_cast<std::ptrdiff_t>(start),
                              truth.begin() + static_cast<std::ptrdiff_t>(end)))
            << "round " << round << ", page at " << start;
    }
    EXPECT_EQ(listedNumbers(0, SIZE_MAX), trueOrder(home));
    expectConsistent(home);
}

TEST(AssetListing, StretchesGrowAndEmptyLittleByLittle) {
    const BareLibrary home(1500, 0, 10);
    const auto isRight = [&] {
        const auto truth = trueOrder(home);
        return listedNumbers(700, 720) == std::vector(truth.begin() + 700, truth.begin() + 720) &&
               listedNumbers(0, 1) == std::vector(1, truth.front());
    };
    for (int round = 0; round < 45; ++round) {
        addBareAssets(home, 10, 20'000 + round * 100, 1);
        ASSERT_TRUE(isRight()) << "grown by " << round;
    }
    for (int round = 0; round < 90; ++round) {
        runSql(home, "DELETE FROM asset WHERE n IN (SELECT n FROM asset ORDER BY created DESC "
                     "LIMIT 12)");
        ASSERT_TRUE(isRight()) << "emptied by " << round;
    }
    addBareAssets(home, 1, 90'000, 1);
    EXPECT_TRUE(isRight());
}

TEST(AssetListing, MarkersAreMadeAnewWhenTheLogNoLongerReachesBack) {
    const BareLibrary home(2000, 0, 1);
    EXPECT_EQ(listedNumbers(1500, 1501).size(), 1u);
    addBareAssets(home, 500, 100, 1);
    runSql(home, "DELETE FROM listing_change WHERE seq < (SELECT max(seq) FROM listing_change)");
    EXPECT_EQ(listedNumbers(0, SIZE_MAX), trueOrder(home));
}

TEST(AssetListing, ACatalogueThatWasPutBackIsListedAsItIs) {
    const BareLibrary home(2000, 0, 1);
    EXPECT_EQ(listedNumbers(1500, 1501).size(), 1u);
    // An older one, whose numbers go back; and then one that has gone on otherwise since.
    runSql(home, "DELETE FROM asset WHERE created < 100;"
                 "DELETE FROM listing_change WHERE seq > 1000;"
                 "UPDATE library SET listing_changes = 1000");
    EXPECT_EQ(listedNumbers(1850, 1851).at(0), trueOrder(home)[1850]);
    EXPECT_EQ(recentsNumber(1850), trueOrder(home)[1850]);
    runSql(home, "UPDATE library SET listing_changes = 990;"
                 "DELETE FROM listing_change WHERE seq > 990;"
                 "DELETE FROM asset WHERE created BETWEEN 1000 AND 1039");
    EXPECT_EQ(listedNumbers(1820, 1821).at(0), trueOrder(home)[1820]);
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
    std::atomic<bool> stop = false;
    std::atomic<int> walks = 0;
    std::vector<std::thread> readers;
    for (int i = 0; i < 4; ++i) {
        readers.emplace_back([&, i] {
            std::mt19937 random(static_cast<unsigned>(i));
            while (!stop) {
                const auto assets = listed();
                const std::size_t start = random() % assets.count();
                std::optional<PHAsset> previous;
                std::size_t at = start;
                for (; at < assets.count() && at < start + 50; ++at) {
                    const auto asset = assets.objectAtIndex(at);
                    ASSERT_TRUE(asset) << at << " of " << assets.count();
                    if (previous) {
                        ASSERT_LE(asset->creationDate, previous->creationDate);
                    }
                    previous = asset;
                }
                if (at == assets.count()) {
                    ASSERT_FALSE(assets.objectAtIndex(at));
                }
                ++walks;
            }
        });
    }
    for (int i = 0; i < 150; ++i) {
        addBareAssets(home, 7, i * 13, 1);
        runSql(home, "DELETE FROM asset WHERE n IN (SELECT n FROM asset ORDER BY n LIMIT 3)");
    }
    stop = true;
    for (std::thread& reader : readers)
        reader.join();
    EXPECT_GT(walks, 4);
    EXPECT_EQ(sqlInteger(home, "SELECT listed FROM library"),
              sqlInteger(home, "SELECT count(*) FROM asset"));
}

TEST(AssetListing, HiddenAndTrashedAssetsAreLeftOutAndHiddenOnesFoundByIdentifier) {
    const BareLibrary home(3);
    const auto& all = home.all;
    runSql(home, "UPDATE asset SET hidden = 1 WHERE created = 2000;"
                 "UPDATE asset SET trashed_at = 1 WHERE created = 1000;"
                 "INSERT INTO favorite SELECT created, n FROM asset WHERE created >= 2000");
    EXPECT_EQ(listedIdentifiers(), std::vector{all[0]});
    EXPECT_EQ(platform::fetchAssetsWithOptions({}).count(), 1u);
    EXPECT_TRUE(listed().objectAtIndex(0)->isFavorite);
    EXPECT_FALSE(listed().objectAtIndex(0)->isHidden);
    EXPECT_TRUE(assetWith(all[1])->isHidden);
    EXPECT_FALSE(assetWith(all[2]));
    const auto found =
        platform::fetchAssetsWithLocalIdentifiers({all[0], "nobody", all[1], "", all[0], all[2]});
    EXPECT_EQ(found.count(), 2u);
}

TEST(Access, DecidesWhatIsSeenAndChanged) {
    const BareLibrary home(4);
    const auto& all = home.all;
    const auto picture = writePicture(home.file("mine.jpg"));

    runSql(home, "UPDATE library SET access = 4; INSERT INTO limited_choice "
                 "SELECT n FROM asset WHERE created IN (1000, 3000)");
    EXPECT_EQ(platform::authorizationStatusForAccessLevel(2), 4);
    EXPECT_EQ(listedIdentifiers(), (std::vector{all[1], all[3]}));
    EXPECT_FALSE(assetWith(all[0]));
    EXPECT_TRUE(assetWith(all[1]));
    const auto own = importFile(picture).identifier.value();
    EXPECT_EQ(listed().count(), 3u);
    EXPECT_TRUE(assetWith(own));

    local::limitAccess({all[1]});
    EXPECT_ANY_THROW(local::limitAccess({all[0], "unknown"}));
    EXPECT_EQ(listedIdentifiers(), std::vector{all[1]}) << "refused as a whole";
    EXPECT_EQ(local::readSettings().limitedChoice, 1u);
    for (const char* refused : {"1", "2"}) {
        local::denyAccess();
        runSql(home, std::string("UPDATE library SET access = ") + refused);
        EXPECT_EQ(listed().count(), 0u);
        EXPECT_FALSE(assetWith(all[1]));
        const auto outcome = importFile(picture);
        EXPECT_EQ(outcome.error.domain, platform::PHPhotosErrorDomain);
        EXPECT_EQ(outcome.error.code, 3311);
        EXPECT_NE(outcome.sentence(), "");
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
