// New albums and folders, and their filing into folders.
#include "organise/filing.h"
#include "tests/core/support.h"

using platform::PHObjectPlaceholder;
using scripted::albumTitled;
using scripted::errorSaying;
using scripted::folderTitled;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

struct CollectionCreation : CoreTest {
    // The library as it is once the album "new album" has gone into the folder "years".
    CollectionCreation() {
        library.folders["years"] = folderTitled("years", "Years");
        library.albums["new album"] = albumTitled("new album", "Trip");
        library.holders["new album"] = {folderTitled("years", "Years")};
    }

    std::string createAlbum(jstring title, jstring parent) {
        return jni::Environment::textOf(
            Java_com_morrowfen_lumatrice_service_PhotosService_nativeCreateAlbum(jvm.env(), nullptr,
                                                                                 title, parent));
    }

    std::string createFolder(jstring title, jstring parent) {
        return jni::Environment::textOf(
            Java_com_morrowfen_lumatrice_service_PhotosService_nativeCreateFolder(
                jvm.env(), nullptr, title, parent));
    }
};

const std::string createdAlbum = "created album Trip (new album) parent=years";
const std::string notInside =
    "file into folder: Photos accepted the change but new album is NOT inside years";

struct Filing : CollectionCreation {
    bool file() { return fileCollectionIntoFolder("new album", folderTitled("years", "Years")); }
};

} // namespace

TEST_F(CollectionCreation, OfAnAlbumCreatesItThenFilesItThenReadsBack) {
    EXPECT_EQ(createAlbum(jvm.string("Trip"), jvm.string("years")), "new album");
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("fetch folders years", "begin changes", "request new album 'Trip'",
                            "changes done", "fetch albums new album", "begin changes",
                            "request folder years", "folder years: add new album", "changes done",
                            "fetch folders that hold new album"));
    EXPECT_THAT(home.logLines(), ElementsAre(createdAlbum));
    EXPECT_EQ(jvm.charactersHeld, 0);
}

TEST_F(CollectionCreation, OfAFolderDoesTheSame) {
    library.changesOnAnotherThread = true;
    library.folders["new folder"] = folderTitled("new folder", "2026");
    library.holders["new folder"] = {folderTitled("years", "Years")};
    EXPECT_EQ(createFolder(jvm.string("2026"), jvm.string("years")), "new folder");
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("fetch folders years", "begin changes", "request new folder '2026'",
                            "changes done", "fetch albums new folder", "fetch folders new folder",
                            "begin changes", "request folder years", "folder years: add new folder",
                            "changes done", "fetch folders that hold new folder"));
    EXPECT_THAT(home.logLines(), ElementsAre("created folder 2026 (new folder) parent=years"));
}

TEST_F(CollectionCreation, WithoutAParentIsAtTheTopLevelAndFilesNothing) {
    for (const jstring none : {jstring(nullptr), jvm.string(""), jvm.stringWithoutCharacters(),
                               jvm.string("\xED\xA0\xBD\xED\xB8\x80")})
        EXPECT_EQ(createAlbum(jvm.string("  "), none), "new album");
    EXPECT_EQ(createFolder(jvm.string("%s"), jvm.string("")), "new folder");
    EXPECT_THAT(home.logLines(), ElementsAre("created album    (new album) parent=top level",
                                             "created album    (new album) parent=top level",
                                             "created album    (new album) parent=top level",
                                             "created album    (new album) parent=top level",
                                             "created folder %s (new folder) parent=top level"));
    EXPECT_THAT(library.operations(), Not(Contains(testing::HasSubstr("fetch"))));
}

TEST_F(CollectionCreation, WithoutATitleTouchesNothingNotEvenTheParentsText) {
    for (const jstring none : {jstring(nullptr), jvm.string(""), jvm.stringWithoutCharacters()}) {
        EXPECT_EQ(createAlbum(none, jvm.string("years")), "(null)");
        EXPECT_EQ(createFolder(none, jvm.string("years")), "(null)");
    }
    EXPECT_EQ(jvm.charactersTaken, 2) << "those of the empty titles";
    EXPECT_THAT(library.operations(), nothingInScopes());
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(CollectionCreation, BelowAnythingButAFolderMakesNothingAndOnlyAlbumsTell) {
    library.folders["nil"] = std::nullopt;
    for (const jstring parent : {jvm.string("new album"), jvm.string("nil")}) {
        EXPECT_EQ(createAlbum(jvm.string("Trip"), parent), "(null)");
        EXPECT_EQ(createFolder(jvm.string("Trip"), parent), "(null)");
    }
    EXPECT_THAT(library.operations(), Not(Contains("begin changes")));
    EXPECT_THAT(home.logLines(), ElementsAre("create album: parent folder not found: new album",
                                             "create album: parent folder not found: nil"));
}

TEST_F(CollectionCreation, ThatIsRefusedOrNamesNothingIsNullAndFilesNothing) {
    library.changeAnswers = {{.done = false, .error = errorSaying("No room.")},
                             {.done = false},
                             {.done = true},
                             {.done = false, .error = platform::NSError{.domain = "d"}},
                             {.done = true, .error = errorSaying("Odd.")}};
    library.placeholders = {PHObjectPlaceholder{"a"}, PHObjectPlaceholder{"b"}, std::nullopt,
                            PHObjectPlaceholder{"d"}, PHObjectPlaceholder{std::nullopt}};
    const jstring years = jvm.string("years");
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(createAlbum(jvm.string("Trip"), years), "(null)");
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(createFolder(jvm.string("Trip"), years), "(null)");
    EXPECT_THAT(home.logLines(),
                ElementsAre("create album failed: No room.", "create album failed: unknown",
                            "create album failed: unknown", "create folder failed: unknown",
                            "create folder failed: Odd."));
    EXPECT_THAT(library.operations(), Not(Contains("request folder years")));
}

TEST_F(CollectionCreation, ThatCannotBeFiledIsNullAfterSayingThatItWasCreated) {
    const jstring years = jvm.string("years");
    library.changeAnswers = {{}, {.done = false, .error = errorSaying("Locked.")}, {}, {}};
    EXPECT_EQ(createAlbum(jvm.string("Trip"), years), "(null)");
    library.holders.clear();
    EXPECT_EQ(createAlbum(jvm.string("Trip"), years), "(null)");
    EXPECT_EQ(createFolder(jvm.string("Trip"), years), "(null)");
    EXPECT_THAT(home.logLines(),
                ElementsAre(createdAlbum, "file into folder failed: Locked.", createdAlbum,
                            notInside, "created folder Trip (new folder) parent=years",
                            "file into folder: created collection not found: new folder"));
    EXPECT_THAT(library.operations(), Not(Contains(testing::StartsWith("delete"))));
}

TEST_F(CollectionCreation, CutsTheLineNeverTheTitle) {
    const std::string title(5000, 't');
    EXPECT_EQ(createAlbum(jvm.string(title), nullptr), "new album");
    EXPECT_THAT(library.operations(), Contains("request new album '" + title + "'"));
    EXPECT_THAT(home.logLines(), ElementsAre("created album " + title.substr(0, 2047 - 14)));
}

TEST_F(Filing, OfNoIdentifierIsDoneWithoutTouchingTheLibrary) {
    EXPECT_TRUE(fileCollectionIntoFolder(std::nullopt, folderTitled("years", "Years")));
    EXPECT_THAT(library.operations(), IsEmpty());
}

TEST_F(Filing, IsConfirmedByAnyOfTheFoldersThatHoldTheCollection) {
    library.holders["new album"] = {folderTitled("Years", ""), std::nullopt,
                                    folderTitled("years", "")};
    EXPECT_TRUE(file());
    library.holders["new album"].pop_back();
    EXPECT_FALSE(file());
    EXPECT_THAT(home.logLines(), ElementsAre(notInside));
}

TEST_F(Filing, AnAlbumThatIsNilIsNotLookedForAmongTheFolders) {
    library.albums["new album"] = std::nullopt;
    library.folders["new album"] = folderTitled("new album", "");
    EXPECT_FALSE(file());
    EXPECT_THAT(library.operations(), ElementsAre("fetch albums new album"));
    EXPECT_THAT(home.logLines(),
                ElementsAre("file into folder: created collection not found: new album"));
}

TEST_F(Filing, FailsWhenRefusedOrWhenTheLibraryGivesNoRequest) {
    library.changeAnswers = {{.done = false}};
    EXPECT_FALSE(file());
    library.holders.clear();
    library.givesChangeRequests = false;
    EXPECT_FALSE(file());
    EXPECT_THAT(home.logLines(), ElementsAre("file into folder failed: unknown", notInside));
}
