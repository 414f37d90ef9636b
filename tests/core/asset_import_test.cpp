#include "tests/core/support.h"

using platform::PHObjectPlaceholder;
using scripted::errorSaying;
using scripted::imageAsset;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Texts = std::vector<std::optional<std::string>>;

namespace {

struct AssetImport : CoreTest {
    AssetImport() {
        library.contentTypes = {{"/in/film.mp4", {"public.mpeg-4"}},
                                {"/in/picture.png", {"public.png"}}};
        library.movieTypes = {"public.mpeg-4"};
        library.readablePaths = {"/in/film.mp4", "/in/picture.png", "/in/no type"};
    }

    jobjectArray import(jobjectArray paths) {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeImportAssets(
            jvm.env(), nullptr, paths);
    }

    Texts importPaths(const std::vector<std::string>& paths) {
        std::vector<jstring> strings;
        strings.reserve(paths.size());
        for (const std::string& path : paths)
            strings.push_back(jvm.string(path));
        const jobjectArray identifiers = import(jvm.array(strings));
        if (identifiers == nullptr)
            return {"(no array)"};
        return jni::Environment::textsOf(identifiers);
    }
};

} // namespace

TEST_F(AssetImport, CopiesTheFileUnderItsLastNameInOneTransaction) {
    EXPECT_EQ(importPaths({"/in/film.mp4"}), Texts{"new asset"});
    EXPECT_THAT(library.operations(),
                ElementsAre("open scope", "readable? /in/film.mp4", "begin changes",
                            "request new asset",
                            "add resource, type 2, /in/film.mp4, named film.mp4, copied",
                            "changes done", "fetch assets new asset", "close scope"));
}

TEST_F(AssetImport, KeepsTheOrderAndThePlacesOfFilesThatFail) {
    library.placeholders = {PHObjectPlaceholder{"film"}, PHObjectPlaceholder{"picture"}};
    EXPECT_EQ(importPaths({"/in/film.mp4", "/in/missing \"%s\".jpg", "/in/picture.png"}),
              (Texts{"film", std::nullopt, "picture"}));
    const auto operations = library.operations();
    EXPECT_THAT(operations, Contains("add resource, type 2, /in/film.mp4, named film.mp4, copied"));
    EXPECT_THAT(operations,
                Contains("add resource, type 1, /in/picture.png, named picture.png, copied"));
    EXPECT_THAT(home.logLines(),
                ElementsAre("import skipped (unreadable): /in/missing \"%s\".jpg"));
}

TEST_F(AssetImport, OfAFileWithoutAContentTypeMakesAPhoto) {
    importPaths({"/in/no type"});
    EXPECT_THAT(library.operations(),
                Contains("add resource, type 1, /in/no type, named no type, copied"));
}

TEST_F(AssetImport, ElementsThatAreNoTextTakeNoPlace) {
    library.placeholders = {PHObjectPlaceholder{"film"}, PHObjectPlaceholder{"picture"}};
    const auto identifiers =
        import(jvm.array({nullptr, jvm.string("/in/film.mp4"), jvm.string("\xED\xA0\x80"),
                          jvm.stringWithoutCharacters(), jvm.string("/in/picture.png")}));
    EXPECT_EQ(jni::Environment::textsOf(identifiers), (Texts{"film", "picture"}));
    // Four elements that are not null, and the two strings that were stored.
    EXPECT_EQ(jvm.localRefsDeleted, 6);
    EXPECT_EQ(jvm.charactersHeld, 0);
}

TEST_F(AssetImport, OfAnEmptyPathIsAnUnreadableFile) {
    EXPECT_EQ(importPaths({""}), Texts{std::nullopt});
    EXPECT_THAT(home.logLines(), ElementsAre("import skipped (unreadable): "));
}

TEST_F(AssetImport, LogsOneLineForEachResourceOfTheNewAsset) {
    library.assets = {imageAsset("new asset")};
    library.resources["new asset"] = {
        {.type = 1, .originalFilename = "picture.png", .uniformTypeIdentifier = "public.png"},
        {.type = 7}};
    importPaths({"/in/picture.png"});
    EXPECT_THAT(home.logLines(), ElementsAre("imported picture.png as new asset: resource type=1 "
                                             "originalFilename='picture.png' uti=public.png",
                                             "imported picture.png as new asset: resource type=7 "
                                             "originalFilename='' uti="));
}

TEST_F(AssetImport, AnswersTheIdentifierEvenWhenTheAssetCannotBeFetched) {
    EXPECT_EQ(importPaths({"/in/picture.png"}), Texts{"new asset"});
    library.firstFoundIsNil = true;
    EXPECT_EQ(importPaths({"/in/picture.png"}), Texts{"new asset"});
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(AssetImport, LogsWhyATransactionWasRefusedAndGoesOn) {
    library.changeAnswers = {{.done = false, .error = errorSaying("No room.")}, {.done = false}};
    EXPECT_EQ(importPaths({"/in/film.mp4", "/in/no type", "/in/picture.png"}),
              (Texts{std::nullopt, std::nullopt, "new asset"}));
    EXPECT_THAT(home.logLines(), ElementsAre("import failed for film.mp4: No room.",
                                             "import failed for no type: unknown"));
}

TEST_F(AssetImport, FailsWithoutANewIdentifier) {
    library.placeholders = {std::nullopt, PHObjectPlaceholder{std::nullopt}};
    EXPECT_EQ(importPaths({"/in/film.mp4", "/in/picture.png"}),
              (Texts{std::nullopt, std::nullopt}));
    EXPECT_THAT(home.logLines(), ElementsAre("import failed for film.mp4: unknown",
                                             "import failed for picture.png: unknown"));
    EXPECT_THAT(library.operations(), Not(Contains(HasSubstr("fetch"))));
}

TEST_F(AssetImport, RunsWhereverTheLibraryRunsTheChanges) {
    library.changesOnAnotherThread = true;
    EXPECT_EQ(importPaths({"/in/picture.png"}), Texts{"new asset"});
}

TEST_F(AssetImport, WithoutAUsablePathIsNullAndTouchesNothing) {
    EXPECT_EQ(import(nullptr), nullptr);
    EXPECT_EQ(import(jvm.array({})), nullptr);
    EXPECT_EQ(import(jvm.array({nullptr, nullptr})), nullptr);
    EXPECT_EQ(import(jvm.array({jvm.string("\xC0\x80")})), nullptr);
    EXPECT_THAT(library.operations(), Each(testing::AnyOf("open scope", "close scope")));
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(AssetImport, WithoutAResultArrayIsNullAndImportsNothing) {
    jvm.newObjectArrayFails = true;
    EXPECT_EQ(importPaths({"/in/film.mp4"}), Texts{"(no array)"});
    jvm.findClassFails = true;
    EXPECT_EQ(importPaths({"/in/film.mp4"}), Texts{"(no array)"});
    EXPECT_THAT(library.operations(), Each(testing::AnyOf("open scope", "close scope")));
}

TEST_F(AssetImport, LeavesAPlaceNullWhoseStringCannotBeMade) {
    jvm.newStringFails = true;
    EXPECT_EQ(importPaths({"/in/film.mp4", "/in/picture.png"}),
              (Texts{std::nullopt, std::nullopt}));
    EXPECT_EQ(jvm.newStringCalls, 2);
    EXPECT_EQ(jvm.localRefsDeleted, 2) << "only those of the paths";
}
