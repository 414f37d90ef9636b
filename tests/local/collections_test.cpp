// Albums, smart albums and folders in the embedded library.
#include "tests/local/support.h"

#include "platform/local/catalogue/asset_record.h"
#include "platform/local/catalogue/collection_record.h"

#include <iterator>
#include <random>
#include <sstream>

namespace {

std::vector<std::string> titles(const PHFetchResult<PHCollection>& collections) {
    std::vector<std::string> all;
    for (const PHCollection& collection : walked(collections))
        all.push_back(std::visit([](const auto& c) { return *c.localizedTitle; }, collection));
    return all;
}

std::vector<std::string> inside(const std::string& identifier) {
    return titles(fetchCollectionsInCollectionList(folder(identifier)));
}

std::optional<PHAssetCollection> smart(long subtype) {
    return fetchAssetCollectionsWithType(PHAssetCollectionTypeSmartAlbum, subtype).objectAtIndex(0);
}

// The numbers of the assets.
std::vector<std::int64_t> inSmart(long subtype) {
    const PHFetchOptions none;
    std::vector<std::int64_t> all;
    for (const PHAsset& asset : walked(fetchAssetsInAssetCollection(*smart(subtype), &none)))
        all.push_back(local::recordOf(asset).n);
    EXPECT_EQ(fetchAssetsInAssetCollection(*smart(subtype), nullptr).count(), all.size())
        << "the kept count of " << subtype;
    return all;
}

void removeFrom(const std::string& of, const std::vector<std::string>& assets) {
    const auto list = album(of);
    const auto found = fetchAssetsWithLocalIdentifiers(assets);
    expectDone([&] { removeAssets(*changeRequestForAssetCollection(list), found); });
}

// An album with what another one shows.
std::string copyOf(const std::string& identifier) {
    const auto shown = fetchAssetsInAssetCollection(album(identifier), nullptr);
    return newAlbum("copy", &shown);
}

// Any folder into any other, so that many a move would close a circle: each may be refused. What
// is deleted may be where another process is just filing something.
void moveAround(const std::vector<std::string>& folders, unsigned seed) {
    std::mt19937 random(seed);
    const auto any = [&] {
        return fetchCollectionListsWithLocalIdentifiers({folders[random() % folders.size()]});
    };
    for (int step = 0; step < 250; ++step) {
        const auto child = any();
        const auto parent = any();
        if (child.count() == 0 || parent.count() == 0)
            continue;
        std::vector<PHCollection> children{*child.objectAtIndex(0)};
        if (step % 10 == 0)
            children = {album(newAlbum("made"))};
        change([&] {
            addChildCollections(*changeRequestForCollectionList(*parent.objectAtIndex(0)),
                                children);
        });
        if (step > 150 && step % 50 == 9)
            change([&] { deleteCollectionLists(child); });
    }
}

} // namespace

TEST(Collections, KeepTheirOrderAndAnyTitle) {
    const ScratchHome home;
    newAlbum("B");
    const auto f = newFolder("A");
    newAlbum("B");
    EXPECT_THAT(titles(fetchTopLevelUserCollections()), ElementsAre("B", "A", "B"));
    EXPECT_EQ(fetchAssetCollectionsWithLocalIdentifiers({f}).count(), 0u);
    runSql(home, "UPDATE collection SET title = NULL WHERE title = 'A'");
    EXPECT_FALSE(folder(f).localizedTitle);
    // An emoji, what is three bytes at most, a surrogate, and bytes that belong to no character.
    const std::string truth = "\xF0\x9F\x98\x80\xC3\xA9\xEF\xBF\xBF|\xED\xA0\x80|\xFF|\xF0\x9F\x98";
    const auto list = folder(f);
    expectDone([&] { setTitle(*changeRequestForCollectionList(list), truth); });
    EXPECT_EQ(folder(f).localizedTitle,
              "\uFFFD\u00E9\uFFFF|\uFFFD\uFFFD\uFFFD|\uFFFD|\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(local::recordOf(folder(f)).title, truth);
}

TEST(Collections, FilingMovesAndRefusesCycles) {
    const ScratchHome home;
    const auto outer = newFolder("outer");
    const auto inner = newFolder("inner");
    const auto leaf = newAlbum("leaf");
    EXPECT_EQ(file(inner, outer), "");
    EXPECT_EQ(file(leaf, inner), "");
    EXPECT_THAT(titles(fetchTopLevelUserCollections()), ElementsAre("outer"));
    EXPECT_THAT(inside(outer), ElementsAre("inner"));
    const auto holders = fetchCollectionListsContainingCollection(album(leaf));
    EXPECT_EQ(holders.objectAtIndex(0)->localIdentifier, inner);
    EXPECT_EQ(fetchCollectionListsContainingCollection(folder(outer)).count(), 0u);
    EXPECT_THAT(file(outer, inner), HasSubstr("inside it"));
    EXPECT_THAT(file(outer, outer), HasSubstr("itself"));
    EXPECT_EQ(file(leaf, outer), "");
    EXPECT_THAT(inside(outer), ElementsAre("inner", "leaf"));
    EXPECT_EQ(file(inner, outer), "") << "where it is already";
    const auto found = fetchCollectionsInCollectionList(folder(outer));
    {
        const auto other = listed();
        const auto exhausted = exhaustDescriptors();
        EXPECT_FALSE(found.objectAtIndex(0));
        EXPECT_EQ(found.count(), 2u);
    }
    EXPECT_THAT(titles(found), ElementsAre("inner", "leaf")) << "when there is room again";
    expectConsistent(home);
}

// What somebody has fetched and is deleted meanwhile is gone for good: what is made after it never
// takes its place.
TEST(Collections, DeletingAFolderTakesWhatIsInsideAndNoAssets) {
    const BareLibrary home(3);
    const auto shelf = folder(newFolder("shelf"));
    const auto deep = newAlbum("deep");
    ASSERT_EQ(add(deep, home.all), "");
    const auto top = newFolder("0");
    auto parent = top;
    for (int depth = 1; depth < 200; ++depth) {
        const auto next = newFolder(std::to_string(depth));
        ASSERT_EQ(file(next, parent), "");
        parent = next;
    }
    ASSERT_EQ(file(deep, parent), "");
    const auto tops = fetchCollectionListsWithLocalIdentifiers({top});
    const auto fetched = fetchAssetCollectionsWithLocalIdentifiers({deep});
    const auto gone = album(deep);
    expectDone([&] { deleteCollectionLists(tops); });
    EXPECT_THAT(titles(fetchTopLevelUserCollections()), ElementsAre("shelf"));
    EXPECT_EQ(listed().count(), 3u);

    const auto next = newAlbum("next");
    ASSERT_EQ(add(next, home.all), "");
    EXPECT_THAT(change([&] { setTitle(*changeRequestForAssetCollection(gone), "x"); }),
                HasSubstr("no longer exists"));
    const auto put = [&] { addChildCollections(*changeRequestForCollectionList(shelf), {gone}); };
    EXPECT_NE(change(put), "");
    EXPECT_THAT(inside(shelf.localIdentifier), IsEmpty());
    EXPECT_FALSE(fetchAssetsInAssetCollection(gone, nullptr).objectAtIndex(0));
    change([&] { deleteAssetCollections(fetched); });
    EXPECT_EQ(own(next).size(), 3u);
    expectConsistent(home);
}

TEST(Albums, KeepMembersInTheirOrderOnceEach) {
    const BareLibrary home(5);
    const auto& all = home.all; // newest first
    const auto a = newAlbum("a");
    EXPECT_EQ(add(a, {all[3]}), "");
    EXPECT_EQ(add(a, {all[0]}), "");
    EXPECT_EQ(add(a, {all[3], all[1], all[0]}), "");
    EXPECT_THAT(newest(a), ElementsAre(all[0], all[1], all[3]));
    EXPECT_THAT(own(a), ElementsAre(all[3], all[0], all[1]));

    runSql(home, "UPDATE asset SET hidden = 1 WHERE created = 5000");
    EXPECT_THAT(newest(a), ElementsAre(all[1], all[3]));
    runSql(home, "UPDATE asset SET created = 9000 WHERE created = 2000");
    EXPECT_THAT(newest(a), ElementsAre(all[3], all[1]));
    runSql(home, "UPDATE asset SET hidden = 0 WHERE created = 5000");
    EXPECT_THAT(own(a), ElementsAre(all[3], all[0], all[1]));
    expectConsistent(home);

    runSql(home, "UPDATE asset SET hidden = 1 WHERE created = 4000");
    EXPECT_EQ(add(a, {all[1], all[4]}), "");
    EXPECT_EQ(add(a, {all[2]}), "");
    removeFrom(a, {all[1], all[2]});
    runSql(home, "UPDATE asset SET hidden = 0 WHERE created = 4000");
    EXPECT_EQ(add(a, {all[1]}), "");
    expectConsistent(home);
    removeFrom(a, {all[0], all[4]});
    EXPECT_THAT(own(a), ElementsAre(all[3], all[1]));

    const auto copy = copyOf(a);
    EXPECT_EQ(own(copy), own(a));
    runSql(home, "DELETE FROM asset WHERE created = 9000");
    EXPECT_THAT(own(copy), ElementsAre(all[1]));
    expectConsistent(home);
}

TEST(Albums, TellWhetherTheyHoldAnAsset) {
    const BareLibrary home(3);
    const auto& all = home.all;
    const auto a = newAlbum("a");
    add(a, {all[0], all[1]});
    runSql(home, "INSERT INTO favorite SELECT created, n FROM asset WHERE created = 3000;"
                 "UPDATE asset SET hidden = 1 WHERE created = 2000");
    const auto holds = [&](const PHAssetCollection& list, const std::string& asset) {
        PHFetchOptions options;
        options.predicate = predicateWithFormat(localIdentifierPredicateFormat, asset);
        return fetchAssetsInAssetCollection(list, &options).count();
    };
    EXPECT_EQ(holds(album(a), all[0]), 1u);
    EXPECT_EQ(holds(album(a), all[1]), 0u) << "hidden";
    EXPECT_EQ(holds(album(a), all[2]), 0u);
    EXPECT_EQ(holds(album(a), "nobody"), 0u);
    EXPECT_EQ(holds(*smart(203), all[0]), 1u);
    EXPECT_EQ(holds(*smart(203), all[2]), 0u);
    EXPECT_EQ(holds(*smart(205), all[1]), 1u);
    add(newAlbum("b"), {all[0]});
    EXPECT_EQ(file(a, newFolder("folder")), "");
    const auto holders = walked(
        fetchAssetCollectionsContainingAsset(*assetWith(all[0]), PHAssetCollectionTypeAlbum));
    ASSERT_EQ(holders.size(), 2u);
    EXPECT_EQ(holders[0].localizedTitle, "b") << "first those at the top";
}

TEST(Albums, AnyPageIsRightInALargeAlbumThatChanges) {
    const BareLibrary home(4000, 1'000'000, 7);
    const auto a = newAlbum("large");
    runSql(home, "UPDATE asset SET created = 1000000 + (n * 7919) % 30000;"
                 "INSERT INTO favorite SELECT created, n FROM asset WHERE n % 3 = 0");
    ASSERT_EQ(add(a, listedIdentifiers()), "");
    std::mt19937 random(5);
    for (int round = 0; round < 12; ++round) {
        runSql(home,
               "UPDATE asset SET hidden = 1 - hidden WHERE n % 97 = " + std::to_string(round * 5));
        const auto whole = newest(a);
        ASSERT_EQ(whole, listedIdentifiers()) << "every asset is in it";
        const PHFetchOptions options = newestFirst();
        const auto assets = fetchAssetsInAssetCollection(album(a), &options);
        for (int i = 0; i < 20; ++i) {
            const std::size_t at = random() % whole.size();
            const auto asset = assets.objectAtIndex(at).value();
            ASSERT_EQ(asset.localIdentifier, whole[at]);
            ASSERT_EQ(asset.isFavorite, local::recordOf(asset).n % 3 == 0);
        }
    }
    expectConsistent(home);
}

TEST(SmartAlbums, AreLiveAndTheirCountsAreKept) {
    const BareLibrary home(10);
    runSql(home, "UPDATE asset SET added = -created;"
                 "UPDATE asset SET media = 2 WHERE n IN (1, 2);"
                 "UPDATE asset SET traits = 1 WHERE n = 3; UPDATE asset SET traits = 2 WHERE n = 4;"
                 "UPDATE asset SET traits = 4 WHERE n = 5; UPDATE asset SET traits = 8 WHERE n = 6;"
                 "UPDATE asset SET traits = 31 WHERE n = 7;"
                 "INSERT INTO favorite SELECT created, n FROM asset WHERE n IN (8, 9);"
                 "UPDATE asset SET hidden = 1 WHERE n IN (9, 7)");
    EXPECT_THAT(inSmart(209), ElementsAre(10, 8, 6, 5, 4, 3, 2, 1));
    EXPECT_THAT(inSmart(203), ElementsAre(8));
    EXPECT_THAT(inSmart(202), ElementsAre(2, 1));
    EXPECT_THAT(inSmart(214), ElementsAre(3));
    EXPECT_THAT(inSmart(217), ElementsAre(4));
    EXPECT_THAT(inSmart(211), ElementsAre(5));
    EXPECT_THAT(inSmart(210), ElementsAre(6));
    EXPECT_THAT(inSmart(201), IsEmpty());
    EXPECT_THAT(inSmart(205), ElementsAre(9, 7));
    EXPECT_EQ(inSmart(206).front(), 1) << "added last";
    runSql(home, "UPDATE asset SET hidden = 0; UPDATE asset SET trashed_at = 1 WHERE n IN (1, 8);"
                 "UPDATE asset SET hidden = 1 WHERE n = 9; DELETE FROM asset WHERE n = 9");
    EXPECT_THAT(inSmart(203), IsEmpty());
    EXPECT_THAT(inSmart(202), ElementsAre(2));
    EXPECT_THAT(inSmart(201), ElementsAre(7));
    EXPECT_THAT(inSmart(205), IsEmpty());
    EXPECT_EQ(smart(205)->assetCollectionType, PHAssetCollectionTypeSmartAlbum);
    const auto hidden = fetchAssetCollectionsWithLocalIdentifiers({smart(205)->localIdentifier});
    EXPECT_EQ(hidden.count(), 1u);
    EXPECT_NE(change([&] { deleteAssetCollections(hidden); }), "");
}

TEST(Collections, AreSeenAccordingToTheAccess) {
    const BareLibrary home(4);
    const auto& all = home.all;
    const auto a = newAlbum("a");
    add(a, all);
    runSql(home, "UPDATE library SET access = 4; INSERT INTO limited_choice SELECT n FROM asset "
                 "WHERE created IN (2000, 4000)");
    EXPECT_THAT(newest(a), ElementsAre(all[0], all[2]));
    EXPECT_EQ(fetchAssetsInAssetCollection(album(a), nullptr).count(), 2u);
    EXPECT_THAT(inSmart(209), ElementsAre(4, 2));
    const auto copy = copyOf(a);
    runSql(home, "UPDATE library SET access = 3");
    EXPECT_THAT(newest(copy), ElementsAre(all[0], all[2]));
    runSql(home, "UPDATE library SET access = 2");
    EXPECT_EQ(fetchTopLevelUserCollections().count(), 0u);
    EXPECT_EQ(fetchAssetCollectionsWithLocalIdentifiers({a}).count(), 0u);
    EXPECT_FALSE(smart(209));
}

// No host can do this through its own methods: those only file what they have just made.
TEST(SharedTree, StaysOneTreeWhenSeveralProcessesMoveFolders) {
    const ScratchHome home;
    inChild([&] { // whoever forks must not have the library open
        std::string lines;
        for (int i = 0; i < 8; ++i)
            lines += newFolder(std::to_string(i)) + '\n';
        writeText(home.file("folders"), lines);
    });
    std::istringstream lines(readBytes(home.file("folders")));
    const std::vector<std::string> folders{std::istream_iterator<std::string>(lines), {}};
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    inProcesses(3, [&](int number) { moveAround(folders, seed + static_cast<unsigned>(number)); });
    expectConsistent(home);
}
