#include "tests/core/support.h"

using scripted::albumTitled;
using scripted::folderTitled;
using scripted::imageAsset;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct CollectionQueries : CoreTest {
    CollectionQueries() {
        library.albums["a"] = albumTitled("a", "Trip 😀");
        library.folders["f"] = folderTitled("f", "Years");
        library.albums["nil"] = std::nullopt;
    }

    std::string parent(jstring collection) {
        return jni::Environment::textOf(
            Java_com_morrowfen_lumatrice_service_PhotosService_nativeParentCollection(
                jvm.env(), nullptr, collection));
    }

    std::string title(jstring collection) {
        return jni::Environment::textOf(
            Java_com_morrowfen_lumatrice_service_PhotosService_nativeCollectionTitle(
                jvm.env(), nullptr, collection));
    }

    jint contains(jstring album, jstring asset) {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeAlbumContainsAsset(
            jvm.env(), nullptr, album, asset);
    }
};

} // namespace

TEST_F(CollectionQueries, ParentIsTheFirstFolderThatHoldsTheCollection) {
    library.holders["a"] = {folderTitled("inner", "Inner"), folderTitled("other", "Other")};
    EXPECT_EQ(parent(jvm.string("a")), "inner");
    EXPECT_THAT(operationsOfCall(), ElementsAre("fetch albums a", "fetch folders that hold a"));
    library.holders["f"] = {folderTitled("outer", "Outer")};
    EXPECT_EQ(parent(jvm.string("f")), "outer");
}

TEST_F(CollectionQueries, FoldersAreAskedOnlyForWhatIsNoAlbum) {
    EXPECT_EQ(title(jvm.string("f")), "Years");
    EXPECT_THAT(operationsOfCall(), ElementsAre("fetch albums f", "fetch folders f"));
    library.folders["a"] = folderTitled("a", "A folder of the same name");
    library.folders["nil"] = folderTitled("nil", "Another");
    EXPECT_EQ(title(jvm.string("a")), "Trip 😀");
    EXPECT_EQ(title(jvm.string("nil")), "(null)");
}

TEST_F(CollectionQueries, WithoutAParentOrATitleAreEmpty) {
    library.albums["a"]->localizedTitle = std::nullopt;
    EXPECT_EQ(parent(jvm.string("a")), "");
    EXPECT_EQ(title(jvm.string("a")), "");
}

TEST_F(CollectionQueries, OfUnknownCollectionsHaveNoParentAndANullTitle) {
    for (const jstring unknown : {jstring(nullptr), jvm.stringWithoutCharacters()}) {
        EXPECT_EQ(parent(unknown), "");
        EXPECT_EQ(title(unknown), "(null)");
    }
    EXPECT_THAT(library.operations(), nothingInScopes());
    for (const jstring unknown : {jvm.string(""), jvm.string("unknown")}) {
        EXPECT_EQ(parent(unknown), "");
        EXPECT_EQ(title(unknown), "(null)");
    }
    EXPECT_THAT(home.logLines(), IsEmpty());
}

TEST_F(CollectionQueries, ContainsAsksTheAlbumForTheOneAsset) {
    library.assetsInAlbum["a"] = {imageAsset("1"), imageAsset("2")};
    EXPECT_EQ(contains(jvm.string("a"), jvm.string("2")), 1);
    EXPECT_THAT(
        operationsOfCall(),
        ElementsAre("fetch albums a", "fetch assets in a, where localIdentifier == %@ of 2"));
    EXPECT_EQ(contains(jvm.string("a"), jvm.string("3")), 0);
    EXPECT_EQ(contains(jvm.string("a"), jvm.string("")), 0);
}

TEST_F(CollectionQueries, ContainsIsMinusOneWithoutAnAlbumOrATextOfBoth) {
    const jstring a = jvm.string("a");
    EXPECT_EQ(contains(a, nullptr), -1);
    EXPECT_EQ(contains(nullptr, a), -1);
    EXPECT_EQ(jvm.charactersTaken, 0);
    EXPECT_EQ(contains(a, jvm.stringWithoutCharacters()), -1);
    EXPECT_EQ(contains(jvm.stringWithoutCharacters(), a), -1);
    EXPECT_THAT(library.operations(), nothingInScopes());
    EXPECT_EQ(contains(jvm.string("f"), a), -1);
    EXPECT_EQ(contains(jvm.string("nil"), a), -1);
    EXPECT_EQ(contains(jvm.string(""), a), -1);
    EXPECT_EQ(jvm.charactersHeld, 0);
}
