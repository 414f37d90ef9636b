// Renaming and deleting albums and folders.
#include "tests/core/support.h"

using scripted::albumTitled;
using scripted::errorSaying;
using scripted::folderTitled;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

struct ExistingCollections : CoreTest {
    ExistingCollections() {
        library.albums["a"] = albumTitled("a", "Trip");
        library.albums["smart"] = scripted::smartAlbumTitled("smart", "Recents");
        library.albums["nil"] = std::nullopt;
        library.folders["f"] = folderTitled("f", "Years");
        library.folders["nil folder"] = std::nullopt;
    }

    jint rename(jstring collection, jstring title) {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeRenameAlbum(
            jvm.env(), nullptr, collection, title);
    }
    jint rename(const std::string& collection) {
        return rename(jvm.string(collection), jvm.string("New"));
    }

    jint remove(jstring collection) {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeDeleteAlbum(
            jvm.env(), nullptr, collection);
    }
};

using CollectionRenaming = ExistingCollections;
using CollectionDeletion = ExistingCollections;

} // namespace

TEST_F(CollectionRenaming, OfAnAlbumReadsItsTitleBack) {
    library.changesOnAnotherThread = true;
    library.changeAnswers = {{.effect = [&] { library.albums["a"]->localizedTitle = "Other"; }}};
    EXPECT_EQ(rename(jvm.string("a"), jvm.string(" New ")), 0);
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("fetch albums a", "begin changes", "request album a",
                            "album a: set title ' New '", "changes done", "fetch albums a"));
    EXPECT_THAT(home.logLines(),
                ElementsAre("renamed album to ' New '; Photos now reports 'Other'"));
    EXPECT_EQ(jvm.charactersHeld, 0);
}

TEST_F(CollectionRenaming, OfAnAlbumSucceedsWhateverTheLibraryReportsThen) {
    library.changeAnswers = {
        {.effect = [&] { library.albums["a"]->localizedTitle = std::nullopt; }},
        {.effect = [&] { library.albums["a"] = std::nullopt; }},
        {.effect = [&] { library.albums.erase("a"); }}};
    EXPECT_EQ(rename("a"), 0);
    EXPECT_EQ(rename("a"), 0);
    library.albums["a"] = albumTitled("a", "Trip");
    EXPECT_EQ(rename("a"), 0);
    EXPECT_THAT(home.logLines(),
                ElementsAre("renamed album to 'New'; Photos now reports ''",
                            "renamed album to 'New'; Photos now reports ''",
                            "renamed album to 'New'; Photos now reports '(gone)'"));
}

TEST_F(CollectionRenaming, OfAFolderIsSilentAndReadsNothingBack) {
    EXPECT_EQ(rename("f"), 0);
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("fetch albums f", "fetch folders f", "begin changes",
                            "request folder f", "folder f: set title 'New'", "changes done"));
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(CollectionRenaming, LogsWhyTheChangeFailed) {
    library.changeAnswers = {{.done = false, .error = errorSaying("Locked.")},
                             {.done = false},
                             {.done = false, .error = errorSaying("Locked.")}};
    EXPECT_EQ(rename("a"), -2);
    EXPECT_EQ(rename("f"), -2);
    EXPECT_EQ(rename("f"), -2);
    EXPECT_THAT(home.logLines(),
                ElementsAre("rename album failed: Locked.", "rename folder failed: unknown",
                            "rename folder failed: Locked."));
}

TEST_F(CollectionRenaming, WithoutAnObjectOrARequestLeavesItToTheTransaction) {
    EXPECT_EQ(rename("nil folder"), 0);
    library.givesChangeRequests = false;
    EXPECT_EQ(rename("a"), 0);
    EXPECT_EQ(rename("f"), 0);
    EXPECT_THAT(library.operations(), Not(Contains(testing::HasSubstr("set title"))));
}

TEST_F(CollectionRenaming, RefusesSmartAlbumsAndUnknownCollectionsWithoutAWord) {
    EXPECT_EQ(rename("smart"), -2);
    EXPECT_EQ(rename("unknown"), -1);
    EXPECT_EQ(rename("nil"), -1);
    EXPECT_EQ(rename(""), -1);
    EXPECT_THAT(library.operations(), Not(Contains("begin changes")));
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(CollectionRenaming, WithoutBothTextsOrWithAnEmptyTitleLooksNothingUp) {
    const jstring a = jvm.string("a");
    EXPECT_EQ(rename(nullptr, a), -1);
    EXPECT_EQ(rename(a, nullptr), -1);
    EXPECT_EQ(jvm.charactersTaken, 0);
    EXPECT_EQ(rename(a, jvm.string("")), -1);
    EXPECT_EQ(rename(a, jvm.string("\xED\xA0\xBD\xED\xB8\x80")), -1);
    EXPECT_EQ(rename(jvm.stringWithoutCharacters(), a), -1);
    EXPECT_EQ(jvm.charactersHeld, 0);
    EXPECT_THAT(library.operations(), nothingInScopes());
}

TEST_F(CollectionDeletion, OfAnAlbumOrAFolderNamesNothingElse) {
    EXPECT_EQ(remove(jvm.string("a")), 0);
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("fetch albums a", "begin changes", "delete albums a", "changes done"));
    scripted::InstalledLibrary other;
    other.folders["f"] = folderTitled("f", "Years");
    EXPECT_EQ(remove(jvm.string("f")), 0);
    EXPECT_THAT(other.operations(),
                ElementsAre("open scope", "fetch albums f", "fetch folders f", "begin changes",
                            "delete folders f", "changes done", "close scope"));
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(CollectionDeletion, HandsTheWholeFindingOnEvenIfItsObjectIsNil) {
    EXPECT_EQ(remove(jvm.string("nil")), 0);
    EXPECT_EQ(remove(jvm.string("nil folder")), 0);
    EXPECT_THAT(library.operations(), Contains("delete albums (nil)"));
    EXPECT_THAT(library.operations(), Contains("delete folders (nil)"));
}

TEST_F(CollectionDeletion, LogsTheSameWordsForAlbumsAndFolders) {
    library.changeAnswers = {{.done = false, .error = errorSaying("Refused by the user.")},
                             {.done = false}};
    EXPECT_EQ(remove(jvm.string("a")), -2);
    EXPECT_EQ(remove(jvm.string("f")), -2);
    EXPECT_THAT(home.logLines(), ElementsAre("delete album failed: Refused by the user.",
                                             "delete album failed: unknown"));
}

TEST_F(CollectionDeletion, RefusesSmartAlbumsAndUnknownCollectionsWithoutAWord) {
    EXPECT_EQ(remove(nullptr), -1);
    EXPECT_EQ(remove(jvm.stringWithoutCharacters()), -1);
    EXPECT_THAT(library.operations(), nothingInScopes());
    EXPECT_EQ(remove(jvm.string("smart")), -2);
    EXPECT_EQ(remove(jvm.string("unknown")), -1);
    EXPECT_EQ(remove(jvm.string("")), -1);
    EXPECT_THAT(library.operations(), Not(Contains("begin changes")));
    EXPECT_THAT(home.logLines(), IsEmpty());
}
