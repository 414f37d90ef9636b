// Copies of albums and of folder trees, and their titles.
#include "organise/copy_title.h"
#include "tests/core/support.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace {

struct CollectionDuplication : CoreTest {
    CollectionDuplication() {
        library.albums["trip"] = albumTitled("trip", "Trip");
        library.folders["years"] = folderTitled("years", "Years");
    }

    std::string duplicate(const std::string& collection) {
        return CALL(DuplicateCollection, collection);
    }

    // What was asked of the library inside transactions, in order.
    std::vector<std::string> requests() {
        std::vector<std::string> lines;
        std::ranges::copy_if(library.operations(), std::back_inserter(lines), [](const auto& line) {
            return line.starts_with("request new") || line.find(": add") != std::string::npos;
        });
        return lines;
    }

    // Years holds Beach (two assets), 2026 (which holds an untitled album) and Last. The copies
    // get the identifiers "copy ...", in the order in which they are asked for.
    void plantTree() {
        library.children["years"] = {albumTitled("beach", "Beach"), std::nullopt,
                                     folderTitled("2026", "2026"), albumTitled("last", "Last")};
        library.children["2026"] = {albumTitled("inner", std::nullopt)};
        library.assetsInAlbum["beach"] = {imageAsset("1"), imageAsset("2")};
        for (const char* const copied : {"years", "beach", "2026", "inner", "last"})
            library.placeholders.push_back(PHObjectPlaceholder{"copy " + std::string(copied)});
        for (const char* const folder : {"copy years", "copy 2026"})
            library.folders[folder] = folderTitled(folder, std::nullopt);
        for (const char* const album : {"copy beach", "copy inner", "copy last"})
            library.albums[album] = albumTitled(album, std::nullopt);
    }
};

} // namespace

TEST(TitleForCopy, TakesTheFirstNumberThatNoSiblingHas) {
    std::set<std::string> taken = {"Trip", "trip copy", "Trip copy 3"};
    EXPECT_EQ(titleForCopy("Trip", taken), "Trip copy");
    taken.insert("Trip copy");
    EXPECT_EQ(titleForCopy("Trip", taken), "Trip copy 2");
    for (int number = 2; number < 999; ++number)
        taken.insert("Trip copy " + std::to_string(number));
    EXPECT_EQ(titleForCopy("Trip", taken), "Trip copy 999");
    taken.insert("Trip copy 999");
    EXPECT_EQ(titleForCopy("Trip", taken), "Trip copy");
    EXPECT_EQ(titleForCopy(std::nullopt, taken), "Album copy");
    EXPECT_EQ(titleForCopy("", taken), " copy");
}

TEST_F(CollectionDuplication, OfAnAlbumSharesItsAssetsBesideItsSiblings) {
    library.changesOnAnotherThread = true;
    library.topLevel = {albumTitled("trip", "Trip"), folderTitled("x", "Trip copy"),
                        albumTitled("y", std::nullopt), std::nullopt};
    library.assetsInAlbum["trip"] = {imageAsset("2"), imageAsset("1")};
    EXPECT_EQ(duplicate("trip"), "new album");
    EXPECT_THAT(library.operations(), Contains("fetch assets in trip, no options"));
    EXPECT_THAT(requests(), ElementsAre("request new album 'Trip copy 2'",
                                        "new album 'Trip copy 2': add assets 2,1"));
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(CollectionDuplication, OfAnAlbumInAFolderIsFiledThereEvenIfThatFails) {
    library.holders["trip"] = {folderTitled("years", "Years"), folderTitled("other", "")};
    library.children["years"] = {albumTitled("trip", "Trip")};
    library.topLevel = {albumTitled("x", "Trip copy")};
    library.albums["new album"] = albumTitled("new album", "Trip copy");
    EXPECT_EQ(duplicate("trip"), "new album");
    EXPECT_THAT(requests(),
                ElementsAre("request new album 'Trip copy'", "folder years: add new album"));
    EXPECT_THAT(home.logLines(),
                ElementsAre("file into folder: Photos accepted the change but new album is NOT "
                            "inside years"));
}

TEST_F(CollectionDuplication, OfAFolderCopiesEachChildAndAllBelowItBeforeTheNext) {
    plantTree();
    EXPECT_EQ(duplicate("years"), "copy years");
    EXPECT_THAT(requests(),
                ElementsAre("request new folder 'Years copy'", "request new album 'Beach'",
                            "new album 'Beach': add assets 1,2",
                            "folder copy years: add copy beach", "request new folder '2026'",
                            "folder copy years: add copy 2026", "request new album 'Untitled'",
                            "folder copy 2026: add copy inner", "request new album 'Last'",
                            "folder copy years: add copy last"));
}

TEST_F(CollectionDuplication, OfAFolderFilesTheNewFolderBeforeFetchingItAndItsChildren) {
    library.holders["years"] = {folderTitled("outer", "Outer")};
    library.folders["new folder"] = folderTitled("new folder", "Years copy");
    library.holders["new folder"] = {folderTitled("outer", "Outer")};
    library.folders["years"]->localizedTitle = std::nullopt;
    library.children["years"] = {smartAlbumTitled("s", "Recents")}; // a plain copy
    EXPECT_EQ(duplicate("years"), "new folder");
    EXPECT_THAT(requests(),
                ElementsAre("request new folder 'Album copy'", "folder outer: add new folder",
                            "request new album 'Recents'"));
    EXPECT_THAT(home.logLines(), SizeIs(1)) << "the copy inside was not filed";
}

TEST_F(CollectionDuplication, SkipsChildrenThatCannotBeCopied) {
    plantTree();
    // The answers to: Years; Beach; 2026; its filing; Last; its filing.
    library.changeAnswers = {{}, {.done = false, .error = errorSaying("No room.")}, {}, {}, {}, {}};
    library.folders.erase("copy 2026"); // made, then gone
    library.placeholders.erase(library.placeholders.begin() + 3);
    EXPECT_EQ(duplicate("years"), "copy years");
    EXPECT_THAT(requests(), Contains("folder copy years: add copy last"));
    EXPECT_THAT(requests(), Not(Contains("request new album 'Untitled'")));
    EXPECT_THAT(home.logLines(),
                ElementsAre("duplicate album failed: No room.",
                            "file into folder: created collection not found: copy 2026",
                            "file into folder: Photos accepted the change but copy last is NOT "
                            "inside copy years"));
}

TEST_F(CollectionDuplication, ThatMakesNothingIsNull) {
    plantTree();
    library.placeholders = {PHObjectPlaceholder{"a"}, std::nullopt, PHObjectPlaceholder{"b"},
                            PHObjectPlaceholder{std::nullopt}};
    library.changeAnswers = {{.done = false}, {}, {.done = false, .error = errorSaying("No.")}, {}};
    EXPECT_EQ(duplicate("trip"), "(null)");
    EXPECT_EQ(duplicate("trip"), "(null)");
    EXPECT_EQ(duplicate("years"), "(null)");
    EXPECT_EQ(duplicate("years"), "(null)");
    EXPECT_THAT(home.logLines(),
                ElementsAre("duplicate album failed: unknown", "duplicate album failed: unknown",
                            "duplicate folder failed: No.", "duplicate folder failed: unknown"));
    EXPECT_THAT(library.operations(), Not(Contains("request new album 'Beach'")));
}

TEST_F(CollectionDuplication, OfAFolderWhoseCopyVanishesIsNullWithoutAWord) {
    plantTree();
    library.changeAnswers = {{.effect = [&] { library.folders.erase("copy years"); }}};
    EXPECT_EQ(duplicate("years"), "(null)");
    EXPECT_THAT(requests(), ElementsAre("request new folder 'Years copy'"));
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(CollectionDuplication, NeedsNoStackForEachLevelOfNesting) {
    constexpr int depth = 30'000; // more than any thread has room for
    for (int level = 0; level < depth; ++level) {
        const std::string source = level == 0 ? "years" : "source " + std::to_string(level);
        const std::string below = "source " + std::to_string(level + 1);
        const std::string copy = "copy " + std::to_string(level);
        library.children[source] = {folderTitled(below, below)};
        library.placeholders.push_back(PHObjectPlaceholder{copy});
        library.folders[copy] = folderTitled(copy, std::nullopt);
        library.holders[copy] = {folderTitled("copy " + std::to_string(level - 1), "")};
    }
    EXPECT_EQ(duplicate("years"), "copy 0");
    EXPECT_TRUE(happened("folder copy 29998: add copy 29999"));
}
