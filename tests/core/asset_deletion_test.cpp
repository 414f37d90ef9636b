#include "tests/core/support.h"

using platform::NSError;
using scripted::errorSaying;
using scripted::imageAsset;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

struct AssetDeletion : CoreTest {
    AssetDeletion() { library.assets = {imageAsset("1"), imageAsset("2"), imageAsset("3")}; }

    jint remove(jobjectArray assets) {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeDeleteAssets(
            jvm.env(), nullptr, assets);
    }

    jint removeRefusedWith(const std::optional<NSError>& error) {
        library.changeAnswers = {{.done = false, .error = error}};
        return remove(jvm.array({jvm.string("1"), jvm.string("2")}));
    }
};

} // namespace

TEST_F(AssetDeletion, IsOneRequestForAllAssetsThatAreFound) {
    library.changesOnAnotherThread = true;
    const auto identifiers =
        jvm.array({jvm.string("3"), nullptr, jvm.string("unknown"), jvm.string("1")});
    EXPECT_EQ(remove(identifiers), 2);
    EXPECT_THAT(operationsOfCall(), ElementsAre("fetch assets 3,unknown,1", "begin changes",
                                                "delete assets 1,3", "changes done"));
    EXPECT_THAT(home.logLines(), ElementsAre("deleted 2 asset(s)"));
    EXPECT_EQ(jvm.localRefsDeleted, 3);
}

TEST_F(AssetDeletion, TellsTheUsersRefusalByDomainAndCodeTogether) {
    const std::string photos(platform::PHPhotosErrorDomain);
    EXPECT_EQ(removeRefusedWith(NSError{photos, 3072, "The user said no."}), -2);
    EXPECT_THAT(home.logLines(), ElementsAre("delete cancelled at the system sheet"));

    const std::vector<NSError> failures = {{"NSCocoaErrorDomain", 3072, "Cancelled elsewhere."},
                                           {"", 3072, "Cancelled nowhere."},
                                           {photos, 3071, "Almost."},
                                           {photos, 3072 + (1L << 32), "Wide."},
                                           {photos, 0, "No code."}};
    for (const NSError& error : failures)
        EXPECT_EQ(removeRefusedWith(error), -3) << *error.localizedDescription;
    EXPECT_THAT(home.logLines(),
                ElementsAre("delete cancelled at the system sheet",
                            "delete failed: Cancelled elsewhere.",
                            "delete failed: Cancelled nowhere.", "delete failed: Almost.",
                            "delete failed: Wide.", "delete failed: No code."));
}

TEST_F(AssetDeletion, FailsWithoutAnErrorToo) {
    EXPECT_EQ(removeRefusedWith(std::nullopt), -3);
    EXPECT_EQ(removeRefusedWith(NSError{"d", 1, std::nullopt}), -3);
    EXPECT_THAT(home.logLines(), ElementsAre("delete failed: unknown", "delete failed: unknown"));
}

TEST_F(AssetDeletion, CutsItsLineWhereAllLinesAreCut) {
    EXPECT_EQ(removeRefusedWith(errorSaying(std::string(3000, 'x'))), -3);
    EXPECT_THAT(home.logLines(), ElementsAre(testing::SizeIs(2047)));
}

TEST_F(AssetDeletion, WithoutAnAssetToDeleteStartsNothing) {
    EXPECT_EQ(remove(nullptr), -1);
    EXPECT_EQ(remove(jvm.array({})), -1);
    EXPECT_EQ(remove(jvm.array({nullptr, jvm.stringWithoutCharacters()})), -1);
    EXPECT_THAT(library.operations(), nothingInScopes());
    EXPECT_EQ(remove(jvm.array({jvm.string("unknown")})), -1);
    EXPECT_THAT(library.operations(), Not(Contains("begin changes")));
    EXPECT_THAT(home.logLines(), IsEmpty());
}
