// What every method answers to arguments that it cannot use: in one table, since the answer is all
// there is. None of them writes a line, keeps characters, or changes anything.
#include "tests/core/support.h"

using jni::unreadable;

namespace {

struct Refusal {
    int line;
    const char* answer;
    std::function<std::string()> call;
};

#define REFUSES(name, answer, ...)                                                                 \
    Refusal {                                                                                      \
        __LINE__, answer, [this] { return CALL(name, __VA_ARGS__); }                               \
    }

// The picture of an emoji in modified UTF-8, and a NUL: what the host may send, and no text.
const std::string surrogates = "\xED\xA0\xBD\xED\xB8\x80";
const std::string modifiedNul = "a\xC0\x80";

struct Refusals : CoreTest {
    static void fill(Library& library) {
        library.assets = {imageAsset("1")};
        library.albums["trip"] = albumTitled("trip", "Trip");
        library.albums["smart"] = smartAlbumTitled("smart", "Recents");
        library.albums["nil"] = std::nullopt;
        library.folders["years"] = folderTitled("years", "Years");
        library.folders["nil"] = folderTitled("nil", "");
        library.folders["nil folder"] = std::nullopt;
        library.files["/rendered.jpg"] = "edited";
    }

    void expectAll(const std::vector<Refusal>& refusals, const std::vector<std::string>& allowed) {
        for (const Refusal& refusal : refusals) {
            SCOPED_TRACE(refusal.line);
            Library fresh;
            fill(fresh);
            EXPECT_EQ(refusal.call(), refusal.answer);
            const auto operations = fresh.operations();
            ASSERT_GE(operations.size(), 2u);
            EXPECT_EQ(operations.front(), "open scope");
            EXPECT_EQ(operations.back(), "close scope");
            for (std::size_t i = 1; i + 1 < operations.size(); ++i)
                EXPECT_TRUE(std::ranges::any_of(allowed, [&](const std::string& start) {
                    return operations[i].starts_with(start);
                })) << operations[i];
            EXPECT_EQ(fresh.files, (decltype(fresh.files){{"/rendered.jpg", "edited"}}));
        }
        EXPECT_EQ(jvm.charactersHeld, 0);
        EXPECT_EQ(jvm.elementsTaken, jvm.localRefsDeleted);
        EXPECT_THAT(home.logLines(), IsEmpty());
    }
};

} // namespace

TEST_F(Refusals, OfNoTextTouchNothing) {
    expectAll(
        {
            REFUSES(ListAlbumAssets, "[]", nullptr, 10, 0),
            REFUSES(ParentCollection, "", unreadable),
            REFUSES(CollectionTitle, "(null)", nullptr),
            REFUSES(AlbumContainsAsset, "-1", nullptr, "1"),
            REFUSES(AlbumContainsAsset, "-1", "trip", unreadable),
            REFUSES(RequestThumbnail, "(null)", unreadable, 8, 8),
            REFUSES(ExportToFile, "-1", unreadable, "/out/one.jpg", 5),
            REFUSES(ContentEditingImage, "-1", nullptr, "/rendered.jpg"),
            REFUSES(ContentEditingImage, "-1", "1", surrogates),
            REFUSES(ApplyEdit, "-1", nullptr, "/rendered.jpg"),
            REFUSES(ApplyEdit, "-1", "1", nullptr),
            REFUSES(ApplyEdit, "-1", unreadable, "/rendered.jpg"),
            REFUSES(ApplyEdit, "-1", "1", surrogates),
            REFUSES(ImportAssets, "(null)", nullptr),
            REFUSES(ImportAssets, "(null)", {}),
            REFUSES(ImportAssets, "(null)", {modifiedNul, unreadable}),
            REFUSES(DeleteAssets, "-1", nullptr),
            REFUSES(DeleteAssets, "-1", {nullptr, unreadable, surrogates}),
            REFUSES(SetFavorite, "-1", nullptr, JNI_TRUE),
            REFUSES(SetFavorite, "-1", {nullptr, unreadable, surrogates}, JNI_TRUE),
            REFUSES(SetHidden, "-1", nullptr, JNI_TRUE),
            REFUSES(CopyAssetAttributes, "-1", "1", nullptr),
            REFUSES(CopyAssetAttributes, "-1", surrogates, "1"),
            REFUSES(AddAssetsToAlbum, "-1", nullptr, {"1"}),
            REFUSES(AddAssetsToAlbum, "-1", "trip", nullptr),
            REFUSES(AddAssetsToAlbum, "-1", unreadable, {"1"}),
            REFUSES(RemoveAssetsFromAlbum, "-1", nullptr, {"1"}),
            REFUSES(RemoveAssetsFromAlbum, "-1", "trip", {nullptr, modifiedNul}),
            REFUSES(CreateAlbum, "(null)", nullptr, "years"),
            REFUSES(CreateAlbum, "(null)", "", "years"),
            REFUSES(CreateFolder, "(null)", surrogates, "years"),
            REFUSES(RenameAlbum, "-1", "trip", nullptr),
            REFUSES(RenameAlbum, "-1", "trip", ""),
            REFUSES(RenameAlbum, "-1", unreadable, "New"),
            REFUSES(DeleteAlbum, "-1", nullptr),
            REFUSES(DuplicateCollection, "(null)", unreadable),
        },
        {});
}

TEST_F(Refusals, OfWhatNamesNothingOnlyLook) {
    expectAll(
        {
            REFUSES(ListAlbums, "[]", "trip"),
            REFUSES(ListAlbums, "[]", "nil folder"),
            REFUSES(ListAlbumAssets, "[]", "years", 10, 0),
            REFUSES(ListAlbumAssets, "[]", "nil", 10, 0),
            REFUSES(ParentCollection, "", ""),
            REFUSES(ParentCollection, "", "unknown"),
            REFUSES(CollectionTitle, "(null)", "unknown"),
            REFUSES(CollectionTitle, "(null)", "nil"),
            REFUSES(AlbumContainsAsset, "-1", "years", "1"),
            REFUSES(AlbumContainsAsset, "-1", "nil", "1"),
            REFUSES(AlbumContainsAsset, "0", "trip", ""),
            REFUSES(RequestThumbnail, "(null)", "unknown", 8, 8),
            REFUSES(ExportToFile, "-1", "unknown", "/rendered.jpg", 5),
            REFUSES(ExportToFile, "-1", "unknown", "", 5),
            REFUSES(ExportToFile, "-2", "1", "/rendered.jpg", 5), // has no file
            REFUSES(ContentEditingImage, "-1", "unknown", "/rendered.jpg"),
            REFUSES(ApplyEdit, "-1", "unknown", "/rendered.jpg"),
            REFUSES(ApplyEdit, "-3", "1", "/missing"),
            REFUSES(ApplyEdit, "-3", "1", ""),
            REFUSES(DeleteAssets, "-1", {"unknown", ""}),
            REFUSES(SetFavorite, "-1", {"unknown", ""}, JNI_TRUE),
            REFUSES(SetHidden, "-1", {"unknown"}, JNI_TRUE),
            REFUSES(CopyAssetAttributes, "-1", "1", "unknown"),
            REFUSES(CopyAssetAttributes, "-1", "unknown", "1"),
            REFUSES(AddAssetsToAlbum, "-1", "years", {"1"}),
            REFUSES(AddAssetsToAlbum, "-1", "nil", {"1"}),
            REFUSES(AddAssetsToAlbum, "-1", "trip", {"unknown", ""}),
            REFUSES(AddAssetsToAlbum, "-2", "smart", {"1"}),
            REFUSES(RemoveAssetsFromAlbum, "-1", "years", {"1"}),
            REFUSES(RemoveAssetsFromAlbum, "-1", "trip", {"unknown"}),
            REFUSES(RemoveAssetsFromAlbum, "-2", "smart", {"1"}),
            REFUSES(CreateFolder, "(null)", "Trip", "trip"), // only albums tell
            REFUSES(CreateFolder, "(null)", "Trip", "nil folder"),
            REFUSES(RenameAlbum, "-2", "smart", "New"),
            REFUSES(RenameAlbum, "-1", "unknown", "New"),
            REFUSES(RenameAlbum, "-1", "nil", "New"),
            REFUSES(DeleteAlbum, "-2", "smart"),
            REFUSES(DeleteAlbum, "-1", "unknown"),
            REFUSES(DuplicateCollection, "(null)", "smart"),
            REFUSES(DuplicateCollection, "(null)", "nil"),
            REFUSES(DuplicateCollection, "(null)", "unknown"),
        },
        {"fetch ", "asset at 0", "read "});
}

TEST_F(Refusals, OfSmartAlbumsComeBeforeAnyLookAtTheAssets) {
    fill(library);
    CALL(AddAssetsToAlbum, "smart", {"1"});
    CALL(ApplyEdit, "1", "/missing"); // the file comes before the asset
    EXPECT_FALSE(happened("fetch assets"));
    EXPECT_EQ(CALL(AddAssetsToAlbum, nullptr, {"1"}), "-1");
    EXPECT_EQ(jvm.elementsTaken, 1) << "the text is looked at before the array";
}

TEST_F(Refusals, OfAFindingWithoutAnObject) {
    fill(library);
    library.firstFoundIsNil = true;
    EXPECT_EQ(CALL(CopyAssetAttributes, "1", "1"), "-1");
    EXPECT_EQ(CALL(RequestThumbnail, "1", 8, 8), "(null)");
    EXPECT_EQ(CALL(ExportToFile, "1", "/out", 5), "-1");
    EXPECT_EQ(CALL(ContentEditingImage, "1", "/out"), "-1");
    EXPECT_EQ(CALL(ApplyEdit, "1", "/rendered.jpg"), "-1");
    EXPECT_FALSE(happened("request") || happened("begin changes"));
    EXPECT_EQ(CALL(SetHidden, {"1", "2"}, JNI_TRUE), "1") << "counts what the fetch claims";
}
