#include "tests/core/support.h"

namespace {

struct AssetImport : CoreTest {
    AssetImport() {
        library.contentTypes = {{"/in/film.mp4", {"public.mpeg-4"}},
                                {"/in/picture.png", {"public.png"}}};
        library.movieTypes = {"public.mpeg-4"};
        library.readablePaths = {"/in/film.mp4", "/in/picture.png", "/in/no type"};
    }
};

} // namespace

TEST_F(AssetImport, CopiesEachFileUnderItsLastNameInATransactionOfItsOwn) {
    library.changesOnAnotherThread = true;
    EXPECT_EQ(CALL(ImportAssets, {"/in/film.mp4"}), "new asset");
    EXPECT_THAT(library.operations(),
                ElementsAre("open scope", "readable? /in/film.mp4", "begin changes",
                            "request new asset",
                            "add resource, type 2, /in/film.mp4, named film.mp4, copied",
                            "changes done", "fetch assets new asset", "close scope"));
    CALL(ImportAssets, {"/in/no type", "/in/picture.png"});
    EXPECT_TRUE(happened("add resource, type 1, /in/no type, named no type, copied"));
    EXPECT_TRUE(happened("add resource, type 1, /in/picture.png, named picture.png, copied"));
    EXPECT_THAT(library.operations(), Contains("begin changes").Times(3));
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(AssetImport, KeepsTheOrderAndThePlacesOfFilesThatFail) {
    library.placeholders = {PHObjectPlaceholder{"film"}, PHObjectPlaceholder{"picture"}};
    EXPECT_EQ(CALL(ImportAssets, {nullptr, "/in/film.mp4", "\xED\xA0\x80", "/in/missing \"%s\".jpg",
                                  jni::unreadable, "", "/in/picture.png"}),
              "film,(null),(null),picture");
    // Six elements that are not null, and the two strings that were stored.
    EXPECT_EQ(jvm.localRefsDeleted, 8);
    EXPECT_EQ(jvm.charactersHeld, 0);
    EXPECT_THAT(home.logLines(), ElementsAre("import skipped (unreadable): /in/missing \"%s\".jpg",
                                             "import skipped (unreadable): "));
}

TEST_F(AssetImport, LogsOneLineForEachResourceOfTheNewAsset) {
    library.assets = {imageAsset("new asset")};
    library.resources["new asset"] = {
        {.type = 1, .originalFilename = "picture.png", .uniformTypeIdentifier = "public.png"},
        {.type = 7}};
    CALL(ImportAssets, {"/in/picture.png"});
    library.firstFoundIsNil = true;
    EXPECT_EQ(CALL(ImportAssets, {"/in/picture.png"}), "new asset") << "with nothing to tell";
    EXPECT_THAT(home.logLines(), ElementsAre("imported picture.png as new asset: resource type=1 "
                                             "originalFilename='picture.png' uti=public.png",
                                             "imported picture.png as new asset: resource type=7 "
                                             "originalFilename='' uti="));
}

TEST_F(AssetImport, LogsWhyAFileWasRefusedAndGoesOn) {
    library.changeAnswers = {{.done = false, .error = errorSaying("No room.")}, {.done = false}};
    library.placeholders = {PHObjectPlaceholder{"a"}, PHObjectPlaceholder{"b"}, std::nullopt,
                            PHObjectPlaceholder{std::nullopt}};
    EXPECT_EQ(CALL(ImportAssets, {"/in/film.mp4", "/in/no type", "/in/picture.png", "/in/film.mp4",
                                  "/in/picture.png"}),
              "(null),(null),(null),(null),new asset");
    EXPECT_THAT(home.logLines(), ElementsAre("import failed for film.mp4: No room.",
                                             "import failed for no type: unknown",
                                             "import failed for picture.png: unknown",
                                             "import failed for film.mp4: unknown"));
    EXPECT_THAT(library.operations(), Contains(HasSubstr("fetch")).Times(1));
}

TEST_F(AssetImport, WithoutAResultArrayImportsNothingAndWithoutAStringLeavesAPlaceNull) {
    jvm.newObjectArrayFails = true;
    EXPECT_EQ(CALL(ImportAssets, {"/in/film.mp4"}), "(null)");
    jvm.findClassFails = true;
    EXPECT_EQ(CALL(ImportAssets, {"/in/film.mp4"}), "(null)");
    EXPECT_FALSE(happened("begin changes"));
    jvm.newObjectArrayFails = jvm.findClassFails = false;
    jvm.newStringFails = true;
    jvm.localRefsDeleted = 0;
    EXPECT_EQ(CALL(ImportAssets, {"/in/film.mp4", "/in/picture.png"}), "(null),(null)");
    EXPECT_THAT(library.operations(), Contains("begin changes").Times(2));
    EXPECT_EQ(jvm.localRefsDeleted, 2) << "only those of the paths";
}
