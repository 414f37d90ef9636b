#include "tests/local/support.h"

#include "platform/change_requests.h"
#include "platform/local/catalogue/asset_record.h"
#include "platform/local/catalogue/catalogue_rules.h"
#include "platform/local/imaging/imaging.h"
#include "platform/local/store/file_store.h"
#include "platform/photo_library.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

namespace support {

bool mountSmallDisk(const fs::path& at, const std::string& options) {
    fs::create_directories(at);
    return unshare(CLONE_NEWNS) == 0 &&
           mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("tmpfs", at.c_str(), "tmpfs", 0, options.c_str()) == 0;
}

int inChild(const std::function<void()>& body) {
    const pid_t child = fork();
    if (child == 0) {
        body();
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int outcome = -1;
    waitpid(child, &outcome, 0);
    EXPECT_TRUE(WIFEXITED(outcome)) << "ended by signal " << WTERMSIG(outcome);
    return WEXITSTATUS(outcome);
}

void onSmallDisk(const std::string& options,
                 const std::function<void(const ScratchHome&, const fs::path&)>& body) {
    const int outcome = inChild([&] {
        const ScratchHome home;
        const fs::path disk = home.path() / "Pictures";
        if (!mountSmallDisk(disk, options))
            _exit(notPossibleHere);
        body(home, disk);
    });
    if (outcome == notPossibleHere)
        GTEST_SKIP() << "this system does not let the test mount a disk";
    EXPECT_EQ(outcome, 0);
}

void closeLibrary() {
    const std::string home = getenv("HOME");
    {
        const ScratchHome other; // opening one library closes the other
        listed();
    }
    setenv("HOME", home.c_str(), 1);
}

void forbidThreads(const ScratchHome& home) {
    if (geteuid() == 0) { // whom the limit does not bind
        constexpr uid_t nobody = 65534;
        lchown(home.path().c_str(), nobody, nobody);
        for (const auto& entry : fs::recursive_directory_iterator(home.path()))
            EXPECT_EQ(lchown(entry.path().c_str(), nobody, nobody), 0);
        EXPECT_EQ(setresuid(nobody, nobody, nobody), 0);
    }
    const rlimit none{1, 1};
    EXPECT_EQ(setrlimit(RLIMIT_NPROC, &none), 0);
}

std::shared_ptr<void> exhaustDescriptors() {
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const local::UniqueFd next(open("/dev/null", O_RDONLY)); // the lowest number that is free
    const rlimit now{static_cast<rlim_t>(next.get()), before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &now);
    return {nullptr, [before](void*) { setrlimit(RLIMIT_NOFILE, &before); }};
}

void sweepUp(const ScratchHome& home) {
    do
        ASSERT_EQ(inChild([] { listed(); }), 0);
    while (!fs::is_empty(home.library() / "incoming"));
}

fs::path writePicture(const fs::path& path, int width, int height, int seed) {
    local::Pixels pixels;
    pixels.width = static_cast<std::uint32_t>(width);
    pixels.height = static_cast<std::uint32_t>(height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            pixels.rgb.push_back(static_cast<std::uint8_t>(x * 255 / width));
            pixels.rgb.push_back(static_cast<std::uint8_t>(y * 255 / height));
            pixels.rgb.push_back(static_cast<std::uint8_t>(seed * 37));
        }
    }
    const auto jpeg = local::encodeJpeg(pixels, 90);
    EXPECT_TRUE(jpeg);
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(jpeg->data()),
               static_cast<std::streamsize>(jpeg->size()));
    return path;
}

platform::NSData dataOf(std::string_view text) {
    return {text.begin(), text.end()};
}

ImportOutcome importFile(const fs::path& path, long type) {
    std::optional<std::string> identifier;
    std::optional<platform::NSError> error;
    const bool done = platform::performChangesAndWait(
        [&] {
            const auto request = platform::creationRequestForAsset();
            platform::PHAssetResourceCreationOptions options;
            options.originalFilename = path.filename().string();
            platform::addResourceWithType(request, type, platform::fileURLWithPath(path.string()),
                                          options);
            identifier = platform::placeholderForCreatedAsset(request)->localIdentifier;
        },
        error);
    if (done)
        return {identifier, {}};
    EXPECT_TRUE(error) << "a refused import says why";
    return {std::nullopt, error.value_or(platform::NSError{})};
}

platform::PHFetchResult<platform::PHAsset> listed() {
    platform::PHFetchOptions options;
    options.sortDescriptors.push_back({"creationDate", false});
    return platform::fetchAssetsWithOptions(options);
}

std::vector<std::string> listedIdentifiers() {
    std::vector<std::string> identifiers;
    const auto assets = listed();
    for (std::size_t i = 0; i < assets.count(); ++i)
        identifiers.push_back(assets.objectAtIndex(i).value().localIdentifier);
    return identifiers;
}

std::optional<platform::PHAsset> assetWith(const std::string& identifier) {
    return platform::fetchAssetsWithLocalIdentifiers({identifier}).objectAtIndex(0);
}

namespace {

// The connection needs the folder's descriptor as long as it lives.
struct Catalogue {
    explicit Catalogue(const ScratchHome& home)
        : folder(open(home.library().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)),
          connection(folder.get(), local::CatalogueConnection::Mode::readWrite) {}

    local::UniqueFd folder;
    local::CatalogueConnection connection;
};

} // namespace

void runSql(const ScratchHome& home, const std::string& sql) {
    Catalogue(home).connection.execute(sql.c_str());
}

std::int64_t sqlInteger(const ScratchHome& home, const std::string& sql) {
    return Catalogue(home).connection.integer(sql.c_str());
}

std::string sqlText(const ScratchHome& home, const std::string& sql) {
    Catalogue catalogue(home);
    local::Statement row = catalogue.connection.statement(sql.c_str());
    return row.step() ? std::string(row.text(0)) : "";
}

std::string storedAs(const ScratchHome& home, const std::string& identifier) {
    const auto asset = assetWith(identifier).value();
    return sqlText(home, "SELECT stored_as FROM asset WHERE n = " +
                             std::to_string(local::recordOf(asset).n));
}

fs::path originalOf(const ScratchHome& home, const std::string& identifier) {
    const std::string stored = storedAs(home, identifier);
    return home.library() / "originals" / stored.substr(0, 2) / stored;
}

void addBareAssets(const ScratchHome& home, int count, std::int64_t firstCreated,
                   std::int64_t step) {
    runSql(home, "WITH RECURSIVE s(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM s WHERE i + 1 < " +
                     std::to_string(count) +
                     ") INSERT INTO asset (uuid, created, media, width, height, filename, "
                     "content_type, stored_as, hash, size, added) SELECT randomblob(16), " +
                     std::to_string(firstCreated) + " + i * " + std::to_string(step) +
                     ", 1, 10, 10, 'bare ' || i, 'public.jpeg', 'none', zeroblob(16), 0, 0 FROM s");
}

BareLibrary::BareLibrary(int count, std::int64_t firstCreated, std::int64_t step) {
    listed();
    addBareAssets(*this, count, firstCreated, step);
    all = listedIdentifiers();
}

std::vector<std::string> filesBelow(const fs::path& folder) {
    std::vector<std::string> found;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (!entry.is_directory() && entry.path().filename() != local::sentinelName)
            found.push_back(fs::relative(entry.path(), folder).string());
    }
    std::sort(found.begin(), found.end());
    return found;
}

using namespace platform;

std::string change(const std::function<void()>& changes) {
    std::optional<NSError> error;
    if (performChangesAndWait(changes, error))
        return "";
    return error ? error->localizedDescription.value_or("no sentence") : "no error";
}

std::string newAlbum(const std::string& title) {
    std::string identifier;
    EXPECT_EQ(change([&] {
                  const auto request = creationRequestForAssetCollectionWithTitle(title);
                  identifier = *placeholderForCreatedAssetCollection(request)->localIdentifier;
              }),
              "");
    return identifier;
}

std::string newFolder(const std::string& title) {
    std::string identifier;
    EXPECT_EQ(change([&] {
                  const auto request = creationRequestForCollectionListWithTitle(title);
                  identifier = *placeholderForCreatedCollectionList(request)->localIdentifier;
              }),
              "");
    return identifier;
}

PHAssetCollection album(const std::string& identifier) {
    return fetchAssetCollectionsWithLocalIdentifiers({identifier}).objectAtIndex(0).value();
}

PHCollectionList folder(const std::string& identifier) {
    return fetchCollectionListsWithLocalIdentifiers({identifier}).objectAtIndex(0).value();
}

PHCollection collection(const std::string& identifier) {
    const auto albums = fetchAssetCollectionsWithLocalIdentifiers({identifier});
    if (albums.count() > 0)
        return albums.objectAtIndex(0).value();
    return folder(identifier);
}

std::string file(const std::string& child, const std::string& parent) {
    const PHCollection collections = collection(child);
    const PHCollectionList list = folder(parent);
    return change(
        [&] { addChildCollections(changeRequestForCollectionList(list).value(), {collections}); });
}

std::string add(const std::string& to, const std::vector<std::string>& assets) {
    const auto list = album(to);
    const auto found = fetchAssetsWithLocalIdentifiers(assets);
    return change([&] { addAssets(changeRequestForAssetCollection(list).value(), found); });
}

std::vector<std::string> identifiers(const PHFetchResult<PHAsset>& assets) {
    std::vector<std::string> all;
    for (std::size_t i = 0; i < assets.count(); ++i)
        all.push_back(assets.objectAtIndex(i).value().localIdentifier);
    EXPECT_FALSE(assets.objectAtIndex(assets.count()));
    return all;
}

PHFetchOptions newestFirst() {
    return {{{"creationDate", false}}, std::nullopt};
}

std::vector<std::string> newest(const std::string& of) {
    const PHFetchOptions options = newestFirst();
    return identifiers(fetchAssetsInAssetCollection(album(of), &options));
}

std::vector<std::string> own(const std::string& of) {
    return identifiers(fetchAssetsInAssetCollection(album(of), nullptr));
}

void expectConsistent(const ScratchHome& home) {
    EXPECT_EQ(sqlText(home, "PRAGMA integrity_check"), "ok");
    EXPECT_EQ(sqlInteger(home, "SELECT count(*) FROM pragma_foreign_key_check"), 0);
    for (const local::CatalogueRule& rule : local::catalogueRules())
        EXPECT_EQ(sqlInteger(home, rule.count), 0) << rule.violation;
}

} // namespace support
