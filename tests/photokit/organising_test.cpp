// Albums and folders: making, filing, renaming, deleting, copying; through the entry points.
#include "tests/photokit/support.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

using Method = jstring (*)(JNIEnv*, jobject, jstring, jstring);

struct Organising : PhotoKitTest {
    Organising() {
        script.assets = {{.id = "a"}, {.id = "b"}};
        script.collections = {{.id = "folder", .title = "Folder", .type = 0},
                              {.id = "trip", .title = "Trip", .assets = {"a", "b"}},
                              {.id = "sub", .type = 0, .parent = "folder"},
                              {.id = "beach", .title = "Beach", .assets = {"b"}, .parent = "sub"},
                              {.id = "smart", .title = "Smart", .type = 2}};
    }

    std::optional<std::string> create(Method method, const std::string& title,
                                      const std::string& parent) {
        const jstring id = method(jvm.env(), nullptr, jvm.string(title), jvm.string(parent));
        return id == nullptr ? std::nullopt : std::optional(jvm.textOf(id));
    }

    std::optional<std::string> createAlbum(const std::string& parent) {
        return create(Java_com_morrowfen_lumatrice_service_PhotosService_nativeCreateAlbum, "New",
                      parent);
    }

    std::optional<std::string> createFolder(const std::string& parent) {
        return create(Java_com_morrowfen_lumatrice_service_PhotosService_nativeCreateFolder, "New",
                      parent);
    }

    jint rename(const std::string& id) {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeRenameAlbum(
            jvm.env(), nullptr, jvm.string(id), jvm.string("Später"));
    }

    jint deleteCollection(const std::string& id) {
        return Java_com_morrowfen_lumatrice_service_PhotosService_nativeDeleteAlbum(
            jvm.env(), nullptr, jvm.string(id));
    }

    std::optional<std::string> duplicate(const std::string& id) {
        const jstring copy =
            Java_com_morrowfen_lumatrice_service_PhotosService_nativeDuplicateCollection(
                jvm.env(), nullptr, jvm.string(id));
        return copy == nullptr ? std::nullopt : std::optional(jvm.textOf(copy));
    }
};

} // namespace

TEST_F(Organising, CreatesAlbumsAndFoldersAndFilesThem) {
    const auto album = createAlbum("folder");
    ASSERT_TRUE(album);
    EXPECT_THAT(calls(),
                ElementsAre("fetch folders folder, options nil", "begin changes",
                            "create album New", "changes done",
                            "fetch albums " + *album + ", options nil", "begin changes",
                            "change folder folder", "add children " + *album, "changes done",
                            "fetch folders with " + *album + ", options nil"));
    const auto folder = createFolder("folder");
    ASSERT_TRUE(folder);
    EXPECT_THAT(calls(),
                ElementsAre("fetch folders folder, options nil", "begin changes",
                            "create folder New", "changes done",
                            "fetch albums " + *folder + ", options nil",
                            "fetch folders " + *folder + ", options nil", "begin changes",
                            "change folder folder", "add children " + *folder, "changes done",
                            "fetch folders with " + *folder + ", options nil"));
    EXPECT_EQ(createAlbum("trip"), std::nullopt);
    EXPECT_THAT(logLines(), ElementsAre("created album New (" + *album + ") parent=folder",
                                        "created folder New (" + *folder + ") parent=folder",
                                        "create album: parent folder not found: trip"));
}

TEST_F(Organising, ReportsEachWayInWhichACreationFails) {
    const standin::Failure failure{.sentence = "no"};
    script.changes = {{.done = false, .failure = failure},
                      {.makesPlaceholders = false},
                      {.makesPlaceholders = false},
                      {},
                      {.takesEffect = false},
                      {},
                      {.done = false, .failure = failure},
                      {},
                      {.makesRequests = false}};
    EXPECT_EQ(createAlbum(""), std::nullopt);
    EXPECT_EQ(createAlbum(""), std::nullopt);
    EXPECT_EQ(createFolder(""), std::nullopt);
    EXPECT_EQ(createAlbum("folder"), std::nullopt); // accepted, but not inside
    EXPECT_EQ(createFolder("folder"), std::nullopt);
    EXPECT_EQ(createFolder("folder"), std::nullopt);
    using testing::HasSubstr;
    using testing::StartsWith;
    EXPECT_THAT(logLines(),
                ElementsAre("create album failed: no", "create album failed: unknown",
                            "create folder failed: unknown", StartsWith("created album New"),
                            HasSubstr("is NOT inside folder"), StartsWith("created folder New"),
                            "file into folder failed: no", StartsWith("created folder New"),
                            HasSubstr("is NOT inside folder")));
}

TEST_F(Organising, RenamesAlbumsAndFolders) {
    EXPECT_EQ(rename("trip"), 0);
    EXPECT_THAT(calls(),
                ElementsAre("fetch albums trip, options nil", "begin changes", "change album trip",
                            "set title Später", "changes done", "fetch albums trip, options nil"));
    EXPECT_EQ(rename("folder"), 0);
    EXPECT_THAT(calls(), ElementsAre("fetch albums folder, options nil",
                                     "fetch folders folder, options nil", "begin changes",
                                     "change folder folder", "set title Später", "changes done"));
    script.changes = {{.done = false}, {.done = false}};
    EXPECT_EQ(rename("trip"), -2);
    EXPECT_EQ(rename("folder"), -2);
    EXPECT_EQ(rename("smart"), -2);
    EXPECT_EQ(rename("unknown"), -1);
    EXPECT_THAT(logLines(),
                ElementsAre("renamed album to 'Später'; Photos now reports 'Später'",
                            "rename album failed: unknown", "rename folder failed: unknown"));
}

TEST_F(Organising, DeletesAlbumsAndFolders) {
    EXPECT_EQ(deleteCollection("trip"), 0);
    EXPECT_THAT(calls(), ElementsAre("fetch albums trip, options nil", "begin changes",
                                     "delete albums trip", "changes done"));
    EXPECT_EQ(deleteCollection("folder"), 0);
    EXPECT_THAT(calls(),
                ElementsAre("fetch albums folder, options nil", "fetch folders folder, options nil",
                            "begin changes", "delete folders folder", "changes done"));
    EXPECT_EQ(script.collections.size(), 1u);
    script.collections.push_back({.id = "beach"});
    script.changes = {{.done = false}};
    EXPECT_EQ(deleteCollection("beach"), -2);
    EXPECT_EQ(deleteCollection("smart"), -2);
    EXPECT_EQ(deleteCollection("trip"), -1);
    EXPECT_THAT(logLines(), ElementsAre("delete album failed: unknown"));
}

TEST_F(Organising, CopiesAnAlbumWithAllItsAssetsInOneRequest) {
    const auto copy = duplicate("trip");
    ASSERT_TRUE(copy);
    EXPECT_THAT(calls(),
                ElementsAre("fetch albums trip, options nil",
                            "fetch folders with trip, options nil", "fetch top level, options nil",
                            "fetch assets in trip, options nil", "begin changes",
                            "create album Trip copy", "add assets a,b", "changes done"));
    EXPECT_THAT(script.collection(*copy)->assets, ElementsAre("a", "b"));
    EXPECT_EQ(duplicate("smart"), std::nullopt);
    script.changes = {{.done = false}};
    EXPECT_EQ(duplicate("trip"), std::nullopt);
    EXPECT_THAT(logLines(), ElementsAre("duplicate album failed: unknown"));
}

TEST_F(Organising, CopiesAFolderWithAllThatIsInIt) {
    const auto copy = duplicate("folder");
    ASSERT_TRUE(copy);
    EXPECT_THAT(calls(), Contains("fetch collections in sub, options nil"));
    std::vector<std::string> tree;
    for (const standin::Collection& one : script.collections) {
        if (one.id.starts_with("new-"))
            tree.push_back(one.title.value_or("-") + " in " +
                           (one.parent.empty() ? "top" : *script.collection(one.parent)->title));
    }
    EXPECT_THAT(tree,
                ElementsAre("Folder copy in top", "Untitled in Folder copy", "Beach in Untitled"));
    EXPECT_THAT(logLines(), IsEmpty());
}
