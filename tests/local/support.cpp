#include "tests/local/support.h"

#include "platform/change_requests.h"
#include "platform/local/catalogue/asset_record.h"
#include "platform/local/catalogue/catalogue_rules.h"
#include "platform/local/store/file_store.h"
#include "tests/local/imaging_support.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace support {
namespace {

constexpr int notPossibleHere = 77;

pid_t start(const std::function<void()>& body) {
    const pid_t process = fork();
    if (process == 0) {
        body();
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    return process;
}

} // namespace

void inProcesses(int count, const std::function<void(int number)>& body) {
    std::vector<pid_t> children;
    for (int i = 0; i < count; ++i)
        children.push_back(start([&] { body(i); }));
    for (const pid_t child : children) {
        int outcome = -1;
        waitpid(child, &outcome, 0);
        if (WIFEXITED(outcome) && WEXITSTATUS(outcome) == notPossibleHere)
            GTEST_SKIP() << "this system does not let the test mount a disk";
        EXPECT_EQ(outcome, 0) << "ended by signal " << WTERMSIG(outcome) << " if that is not 0";
    }
}

void inChild(const std::function<void()>& body) {
    inProcesses(1, [&](int) { body(); });
}

void withOwnMounts(const std::function<void()>& body) {
    inChild([&] {
        if (unshare(CLONE_NEWNS) != 0)
            _exit(notPossibleHere);
        mountAt("/", "none", MS_REC | MS_PRIVATE);
        body();
    });
}

void mountAt(const fs::path& place, const fs::path& what, unsigned long flags,
             const char* options) {
    if (mount(what.c_str(), place.c_str(), what.c_str(), flags, options) != 0)
        _exit(notPossibleHere);
}

void onSmallDisk(const std::string& options,
                 const std::function<void(const ScratchHome&, const fs::path&)>& body) {
    withOwnMounts([&] {
        const ScratchHome home;
        fs::create_directory(home.file("Pictures"));
        mountAt(home.file("Pictures"), "tmpfs", 0, options.c_str());
        body(home, home.file("Pictures"));
    });
}

std::shared_ptr<void> otherProcess(const std::function<void()>& body) {
    return {nullptr, [process = start(body)](void*) {
                kill(process, SIGKILL);
                waitpid(process, nullptr, 0);
            }};
}

void closeLibrary() {
    const std::string home = getenv("HOME");
    {
        const ScratchHome other; // opening one library closes the other
        listed();
    }
    setenv("HOME", home.c_str(), 1);
}

std::ptrdiff_t openDescriptors() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

std::shared_ptr<void> exhaustDescriptors() {
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const local::UniqueFd next(open("/dev/null", O_RDONLY)); // the lowest number that is free
    const rlimit now{static_cast<rlim_t>(next.get()), before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &now);
    return {nullptr, [before](void*) { setrlimit(RLIMIT_NOFILE, &before); }};
}

fs::path writePicture(const fs::path& path, int width, int height, int seed) {
    const auto gradient = [&](int x, int y) {
        return imaging_test::Colour{x * 255 / width, y * 255 / height, seed * 37 % 256};
    };
    imaging_test::writeJpeg(path, imaging_test::painted(width, height, gradient), 90);
    return path;
}

NSData dataOf(std::string_view text) {
    return {text.begin(), text.end()};
}

ImportOutcome importFile(const fs::path& path, long type) {
    ImportOutcome outcome;
    std::optional<NSError> error;
    const auto create = [&] {
        const auto request = creationRequestForAsset();
        PHAssetResourceCreationOptions options;
        options.originalFilename = path.filename().string();
        addResourceWithType(request, type, {path.string()}, options);
        outcome.identifier = placeholderForCreatedAsset(request)->localIdentifier;
    };
    if (performChangesAndWait(create, error))
        return outcome;
    EXPECT_TRUE(error) << "a refused import says why";
    return {std::nullopt, error.value_or(NSError{})};
}

PHFetchOptions newestFirst() {
    return {{{"creationDate", false}}, std::nullopt};
}

PHFetchResult<PHAsset> listed() {
    return fetchAssetsWithOptions(newestFirst());
}

std::vector<std::string> listedIdentifiers() {
    return identifiers(listed());
}

std::vector<std::string> identifiers(const PHFetchResult<PHAsset>& assets) {
    std::vector<std::string> all;
    for (const PHAsset& asset : walked(assets))
        all.push_back(asset.localIdentifier);
    return all;
}

std::optional<PHAsset> assetWith(const std::string& identifier) {
    return fetchAssetsWithLocalIdentifiers({identifier}).objectAtIndex(0);
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

fs::path originalOf(const ScratchHome& home, const std::string& identifier) {
    const auto n = std::to_string(local::recordOf(assetWith(identifier).value()).n);
    const auto stored = sqlText(home, "SELECT stored_as FROM asset WHERE n = " + n);
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

std::string change(const std::function<void()>& changes) {
    std::optional<NSError> error;
    if (performChangesAndWait(changes, error))
        return "";
    return error ? error->localizedDescription.value_or("no sentence") : "no error";
}

void expectDone(const std::function<void()>& changes) {
    EXPECT_EQ(change(changes), "");
}

std::string newAlbum(const std::string& title, const PHFetchResult<PHAsset>* held) {
    std::string identifier;
    expectDone([&] {
        const auto request = creationRequestForAssetCollectionWithTitle(title);
        if (held)
            addAssets(request, *held);
        identifier = *placeholderForCreatedAssetCollection(request)->localIdentifier;
    });
    return identifier;
}

std::string newFolder(const std::string& title) {
    std::string identifier;
    expectDone([&] {
        const auto request = creationRequestForCollectionListWithTitle(title);
        identifier = *placeholderForCreatedCollectionList(request)->localIdentifier;
    });
    return identifier;
}

PHAssetCollection album(const std::string& identifier) {
    return fetchAssetCollectionsWithLocalIdentifiers({identifier}).objectAtIndex(0).value();
}

PHCollectionList folder(const std::string& identifier) {
    return fetchCollectionListsWithLocalIdentifiers({identifier}).objectAtIndex(0).value();
}

std::string file(const std::string& child, const std::string& parent) {
    const auto albums = walked(fetchAssetCollectionsWithLocalIdentifiers({child}));
    const auto moved = albums.empty() ? PHCollection(folder(child)) : PHCollection(albums[0]);
    const auto list = folder(parent);
    return change([&] { addChildCollections(*changeRequestForCollectionList(list), {moved}); });
}

std::string add(const std::string& to, const std::vector<std::string>& assets) {
    const auto list = album(to);
    const auto found = fetchAssetsWithLocalIdentifiers(assets);
    return change([&] { addAssets(*changeRequestForAssetCollection(list), found); });
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
