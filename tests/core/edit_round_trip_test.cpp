#include "tests/core/support.h"

namespace {

struct EditRoundTrip : CoreTest {
    EditRoundTrip() {
        library.assets = {imageAsset("one")};
        library.editingAnswers = {{.imagePath = "/lib/base.jpg"}};
        library.files = {{"/lib/base.jpg", "unedited"}, {"/work/rendered.jpg", "edited"}};
    }

    std::string takeOut() { return CALL(ContentEditingImage, "one", "/work/base.jpg"); }
    std::string apply() { return CALL(ApplyEdit, "one", "/work/rendered.jpg"); }
};

} // namespace

TEST_F(EditRoundTrip, CopiesThePictureInPlaceOfWhatStoodThereAndKeepsItsInputUntilThen) {
    EXPECT_EQ(takeOut(), "0");
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("fetch assets one", "asset at 0",
                            "request editing input of one, network", "remove /work/base.jpg",
                            "copy /lib/base.jpg to /work/base.jpg", "release input"));
    EXPECT_EQ(library.files["/work/base.jpg"], "unedited");
    EXPECT_THAT(home.logLines(), IsEmpty());
    EXPECT_EQ(jvm.charactersHeld, 0);
}

TEST_F(EditRoundTrip, CommitsTheRenderedBytesWithTheHostsAdjustmentData) {
    library.changesOnAnotherThread = true;
    const std::string bytes("\xFF\xD8 any bytes \0 at all", 22);
    library.files["/work/rendered.jpg"] = bytes;
    EXPECT_EQ(apply(), "0");
    EXPECT_THAT(operationsOfCall(),
                ElementsAre("read /work/rendered.jpg", "fetch assets one", "asset at 0",
                            "request editing input of one, network", "make output",
                            "write /edit/rendered.jpg, options 1", "begin changes",
                            "asset one: edit 'com.morrowfen.lumatrice.edit' '1' 'lumatrice' of '" +
                                bytes + "'",
                            "changes done", "release output", "release input"));
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(EditRoundTrip, TakesUpEveryEarlierEditSoThatThePictureIsTheUneditedOne) {
    library.earlierEdits = {PHAdjustmentData{"com.morrowfen.lumatrice.edit", "1", {}},
                            PHAdjustmentData{"org.example.other", "99", {1, 2}},
                            PHAdjustmentData{}};
    EXPECT_EQ(takeOut(), "0");
    EXPECT_EQ(apply(), "0");
    EXPECT_THAT(library.operations(),
                Contains("edit of com.morrowfen.lumatrice.edit can be taken up").Times(2));
    EXPECT_THAT(library.operations(), Contains("edit of org.example.other can be taken up"));
    EXPECT_FALSE(happened("is foreign"));
}

TEST_F(EditRoundTrip, WaitsForTheInputWhereverAndHoweverOftenItIsHandedOut) {
    for (const HandlerCalls calls :
         {HandlerCalls::onceFromAnotherThread, HandlerCalls::onceFromAnotherThreadBeforeReturning,
          HandlerCalls::twiceFromAnotherThread}) {
        library.editingHandler = calls;
        for (int round = 0; round < 50; ++round) {
            ASSERT_EQ(takeOut(), "0");
            ASSERT_EQ(apply(), "0");
        }
    }
    library.operations(); // late calls of the handlers included
}

TEST_F(EditRoundTrip, TheLastInputHandedOutReplacesTheOthers) {
    library.editingAnswers = {{.imagePath = "/nowhere"}, {.imagePath = "/lib/base.jpg"}};
    EXPECT_EQ(takeOut(), "0");
    library.editingAnswers = {{.imagePath = "/lib/base.jpg"}, {.hasInput = false}};
    EXPECT_EQ(takeOut(), "-2");
    EXPECT_EQ(apply(), "-2");
}

TEST_F(EditRoundTrip, OfWhatCannotBeEditedTouchesNoFile) {
    library.editingAnswers = {{.hasInput = false}};
    EXPECT_EQ(takeOut(), "-2");
    EXPECT_EQ(apply(), "-2");
    library.editingAnswers = {{.imagePath = std::nullopt}}; // as for a video
    EXPECT_EQ(takeOut(), "-2");
    EXPECT_FALSE(happened("remove"));
    EXPECT_FALSE(happened("make output"));
    EXPECT_THAT(home.logLines(), IsEmpty());
    EXPECT_EQ(apply(), "0"); // the library decides about such an edit when it is committed
}

TEST_F(EditRoundTrip, LogsWhyTheCopyFailed) {
    library.files["/work/base.jpg"] = "older";
    library.failing = {"copy /lib/base.jpg to /work/base.jpg"};
    EXPECT_EQ(takeOut(), "-3");
    EXPECT_FALSE(library.files.contains("/work/base.jpg"));
    library.failing.insert("remove /work/base.jpg"); // is nobody's concern
    library.fileError = errorSaying("No such folder.");
    EXPECT_EQ(takeOut(), "-3");
    EXPECT_THAT(home.logLines(), ElementsAre("editing image copy failed: unknown",
                                             "editing image copy failed: No such folder."));
}

TEST_F(EditRoundTrip, LogsWhyTheRenderedBytesCouldNotBeHandedOverAndChangesNothing) {
    library.failing = {"write /edit/rendered.jpg, options 1"};
    EXPECT_EQ(apply(), "-3");
    library.fileError = errorSaying("Disk full.");
    EXPECT_EQ(apply(), "-3");
    EXPECT_FALSE(happened("begin changes"));
    EXPECT_THAT(home.logLines(),
                ElementsAre("rendered write failed: unknown", "rendered write failed: Disk full."));
}

TEST_F(EditRoundTrip, LogsWhyTheEditWasRefused) {
    library.changeAnswers = {{.done = false, .error = errorSaying("No JPEG.")}, {.done = false}};
    EXPECT_EQ(apply(), "-4");
    EXPECT_EQ(apply(), "-4");
    EXPECT_THAT(home.logLines(),
                ElementsAre("apply edit failed: No JPEG.", "apply edit failed: unknown"));
}
