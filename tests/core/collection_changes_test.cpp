// New albums and folders, their filing into folders, new titles, and the end of them.
#include "tests/core/support.h"

namespace {

struct CollectionCreation : CoreTest {
    // The library as it is once the album "new album" has gone into the folder "years".
    CollectionCreation() {
        library.folders["years"] = folderTitled("years", "Years");
        library.albums["new album"] = albumTitled("new album", "Trip");
        library.holders["new album"] = {folderTitled("years", "Years")};
    }
};

struct Filing : CollectionCreation {
    bool file() { return CALL(CreateAlbum, "Trip", "years") == "new album"; }
};

struct CollectionRenaming : CoreTest {
    CollectionRenaming() {
        library.albums["a"] = albumTitled("a", "Trip");
        library.folders["f"] = folderTitled("f", "Years");
        library.folders["nil"] = std::nullopt;
    }
};
using CollectionDeletion = CollectionRenaming;

const std::string createdAlbum = "created album Trip (new album) parent=years";
const std::string notInside =
    "file into folder: Photos accepted the change but new album is NOT inside years";

} // namespace

TEST_F(CollectionCreation, CreatesThenFilesThenReadsBack) {
    EXPECT_EQ(CALL(CreateAlbum, "Trip", "years"), "new album");
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("fetch folders years", "begin changes", "request new album 'Trip'",
                            "changes done", "fetch albums new album", "begin changes",
                            "request folder years", "folder years: add new album", "changes done",
                            "fetch folders that hold new album"));
    library.changesOnAnotherThread = true;
    library.folders["new folder"] = folderTitled("new folder", "2026");
    library.holders["new folder"] = {folderTitled("years", "Years")};
    EXPECT_EQ(CALL(CreateFolder, "2026", "years"), "new folder");
    EXPECT_TRUE(happened("request new folder '2026'"));
    EXPECT_TRUE(happened("folder years: add new folder"));
    EXPECT_THAT(home.logLines(),
                ElementsAre(createdAlbum, "created folder 2026 (new folder) parent=years"));
}

TEST_F(CollectionCreation, WithoutAParentIsAtTheTopLevelAndFilesNothing) {
    for (const jni::Text& none :
         {jni::Text(nullptr), jni::Text(""), jni::Text(jni::unreadable), jni::Text("\xED\xA0\x80")})
        EXPECT_EQ(CALL(CreateAlbum, "  ", none), "new album");
    EXPECT_EQ(CALL(CreateFolder, "%s", ""), "new folder");
    std::vector<std::string> lines(4, "created album    (new album) parent=top level");
    lines.push_back("created folder %s (new folder) parent=top level");
    EXPECT_EQ(home.logLines(), lines);
    EXPECT_FALSE(happened("fetch"));
}

TEST_F(CollectionCreation, BelowAnythingButAFolderMakesNothing) {
    library.folders["nil"] = std::nullopt;
    EXPECT_EQ(CALL(CreateAlbum, "Trip", "new album"), "(null)");
    EXPECT_EQ(CALL(CreateAlbum, "Trip", "nil"), "(null)");
    EXPECT_FALSE(happened("begin changes"));
    EXPECT_THAT(home.logLines(), ElementsAre("create album: parent folder not found: new album",
                                             "create album: parent folder not found: nil"));
}

TEST_F(CollectionCreation, ThatIsRefusedOrNamesNothingIsNullAndFilesNothing) {
    library.changeAnswers = {{.done = false, .error = errorSaying("No room.")},
                             {.done = false},
                             {.done = true},
                             {.done = false, .error = NSError{.domain = "d"}},
                             {.done = true, .error = errorSaying("Odd.")}};
    library.placeholders = {PHObjectPlaceholder{"a"}, PHObjectPlaceholder{"b"}, std::nullopt,
                            PHObjectPlaceholder{"d"}, PHObjectPlaceholder{std::nullopt}};
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(CALL(CreateAlbum, "Trip", "years"), "(null)");
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(CALL(CreateFolder, "Trip", "years"), "(null)");
    EXPECT_THAT(home.logLines(),
                ElementsAre("create album failed: No room.", "create album failed: unknown",
                            "create album failed: unknown", "create folder failed: unknown",
                            "create folder failed: Odd."));
    EXPECT_FALSE(happened("request folder years"));
}

TEST_F(CollectionCreation, ThatCannotBeFiledIsNullAfterSayingThatItWasCreated) {
    library.changeAnswers = {{}, {.done = false, .error = errorSaying("Locked.")}, {}, {}};
    EXPECT_EQ(CALL(CreateAlbum, "Trip", "years"), "(null)");
    library.holders.clear();
    EXPECT_EQ(CALL(CreateAlbum, "Trip", "years"), "(null)");
    EXPECT_EQ(CALL(CreateFolder, "Trip", "years"), "(null)");
    EXPECT_THAT(home.logLines(),
                ElementsAre(createdAlbum, "file into folder failed: Locked.", createdAlbum,
                            notInside, "created folder Trip (new folder) parent=years",
                            "file into folder: created collection not found: new folder"));
    EXPECT_FALSE(happened("delete"));
}

TEST_F(CollectionCreation, CutsTheLineNeverTheTitle) {
    const std::string title(5000, 't');
    EXPECT_EQ(CALL(CreateAlbum, title, nullptr), "new album");
    EXPECT_TRUE(happened("request new album '" + title + "'"));
    EXPECT_THAT(home.logLines(), ElementsAre("created album " + title.substr(0, 2047 - 14)));
}

TEST_F(Filing, IsConfirmedByAnyOfTheFoldersThatHoldTheCollection) {
    library.holders["new album"] = {folderTitled("Years", ""), std::nullopt,
                                    folderTitled("years", "")};
    EXPECT_TRUE(file());
    library.holders["new album"].pop_back();
    EXPECT_FALSE(file());
    EXPECT_THAT(home.logLines(), ElementsAre(createdAlbum, createdAlbum, notInside));
}

TEST_F(Filing, FailsWhenRefusedOrWithoutARequestOrAnObject) {
    library.changeAnswers = {{}, {.done = false}};
    EXPECT_FALSE(file());
    library.holders.clear();
    library.givesChangeRequests = false;
    EXPECT_FALSE(file());
    // An album that is nil is not looked for among the folders.
    library.albums["new album"] = std::nullopt;
    library.folders["new album"] = folderTitled("new album", "");
    EXPECT_FALSE(file());
    EXPECT_FALSE(happened("fetch folders new album"));
    EXPECT_THAT(home.logLines(),
                ElementsAre(createdAlbum, "file into folder failed: unknown", createdAlbum,
                            notInside, createdAlbum,
                            "file into folder: created collection not found: new album"));
}

TEST_F(CollectionRenaming, OfAnAlbumReadsItsTitleBackAndSucceedsWhateverThatIs) {
    library.changesOnAnotherThread = true;
    library.changeAnswers = {
        {.effect = [&] { library.albums["a"]->localizedTitle = "Other"; }},
        {.effect = [&] { library.albums["a"]->localizedTitle = std::nullopt; }},
        {.effect = [&] { library.albums["a"] = std::nullopt; }},
        {.effect = [&] { library.albums.erase("a"); }}};
    EXPECT_EQ(CALL(RenameAlbum, "a", " New "), "0");
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("fetch albums a", "begin changes", "request album a",
                            "album a: set title ' New '", "changes done", "fetch albums a"));
    EXPECT_EQ(CALL(RenameAlbum, "a", "New"), "0");
    EXPECT_EQ(CALL(RenameAlbum, "a", "New"), "0");
    library.albums["a"] = albumTitled("a", "Trip");
    EXPECT_EQ(CALL(RenameAlbum, "a", "New"), "0");
    EXPECT_THAT(home.logLines(),
                ElementsAre("renamed album to ' New '; Photos now reports 'Other'",
                            "renamed album to 'New'; Photos now reports ''",
                            "renamed album to 'New'; Photos now reports ''",
                            "renamed album to 'New'; Photos now reports '(gone)'"));
}

TEST_F(CollectionRenaming, OfAFolderIsSilentAndReadsNothingBack) {
    EXPECT_EQ(CALL(RenameAlbum, "f", "New"), "0");
    EXPECT_EQ(CALL(RenameAlbum, "nil", "Newer"), "0") << "the transaction decides";
    library.givesChangeRequests = false;
    EXPECT_EQ(CALL(RenameAlbum, "f", "Newest"), "0");
    EXPECT_THAT(library.operations(), Contains(HasSubstr("set title")).Times(1));
    EXPECT_THAT(library.operations(), Contains("folder f: set title 'New'"));
    EXPECT_THAT(library.operations(), Contains("fetch folders f").Times(2));
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(CollectionDeletion, NamesNothingElseAndHandsTheWholeFindingOnEvenIfItsObjectIsNil) {
    EXPECT_EQ(CALL(DeleteAlbum, "a"), "0");
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("fetch albums a", "begin changes", "delete albums a", "changes done"));
    library.albums["a"] = std::nullopt;
    EXPECT_EQ(CALL(DeleteAlbum, "a"), "0");
    EXPECT_EQ(CALL(DeleteAlbum, "f"), "0");
    EXPECT_EQ(CALL(DeleteAlbum, "nil"), "0");
    for (const char* const line :
         {"delete albums (nil)", "delete folders f", "delete folders (nil)"})
        EXPECT_THAT(library.operations(), Contains(line).Times(1));
    EXPECT_THAT(library.operations(), Contains(testing::StartsWith("delete")).Times(4));
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(CollectionDeletion, AndRenamingLogWhyTheyWereRefused) {
    library.changeAnswers.assign(4, {.done = false, .error = errorSaying("Locked.")});
    library.changeAnswers[1].error = library.changeAnswers[3].error = std::nullopt;
    EXPECT_EQ(CALL(RenameAlbum, "a", "New"), "-2");
    EXPECT_EQ(CALL(RenameAlbum, "f", "New"), "-2");
    EXPECT_EQ(CALL(DeleteAlbum, "a"), "-2");
    EXPECT_EQ(CALL(DeleteAlbum, "f"), "-2");
    EXPECT_THAT(home.logLines(),
                ElementsAre("rename album failed: Locked.", "rename folder failed: unknown",
                            "delete album failed: Locked.", "delete album failed: unknown"));
}
