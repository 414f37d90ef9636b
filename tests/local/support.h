// What the tests of the embedded library share: a home of their own, pictures, imports, and short
// ways to make, find, change and check albums and folders.
#pragma once

#include "platform/asset_change_requests.h"
#include "platform/collection_change_requests.h"
#include "platform/files.h"
#include "platform/local/catalogue/catalogue_connection.h"
#include "platform/photo_library.h"
#include "tests/support/files.h"
#include "tests/support/home.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace support {

// A small disk of its own below `at`, in this process's view only; skips the test where the
// system does not allow it. Call before any thread is started.
bool mountSmallDisk(const std::filesystem::path& at, const std::string& options);

// Runs `body` in a process of its own, which starts without an open library if this one has
// none; answers its exit code: 0, or 1 when an expectation failed in it. A signal is a failure.
inline constexpr int notPossibleHere = 77;
int inChild(const std::function<void()>& body);

// Runs `body` in such a process, with its Pictures folder on a small disk; skips the test where the
// system does not allow it.
void onSmallDisk(const std::string& options,
                 const std::function<void(const ScratchHome&, const std::filesystem::path&)>& body);

// Closes the library that this process has open, so that a process forked from it may open it.
void closeLibrary();

// From here on this process cannot start another thread; it may no longer be root's.
void forbidThreads(const ScratchHome& home);

// From here on this process opens no further file, until the answer goes.
std::shared_ptr<void> exhaustDescriptors();

// Opens the library in processes of their own until nothing is left of one that was killed: a
// worker that it was just starting may hold its locks for a moment longer.
void sweepUp(const ScratchHome& home);

// Writes a JPEG with a gradient; `seed` makes its bytes differ.
std::filesystem::path writePicture(const std::filesystem::path& path, int width = 64,
                                   int height = 48, int seed = 0);
platform::NSData dataOf(std::string_view text);

struct ImportOutcome {
    std::optional<std::string> identifier; // when done
    platform::NSError error;               // when not
    std::string sentence() const { return error.localizedDescription.value_or(""); }
};
ImportOutcome importFile(const std::filesystem::path& path,
                         long type = platform::PHAssetResourceTypePhoto);

platform::PHFetchResult<platform::PHAsset> listed();
std::vector<std::string> listedIdentifiers();
std::optional<platform::PHAsset> assetWith(const std::string& identifier);

// Runs statements on the catalogue as another program would.
void runSql(const ScratchHome& home, const std::string& sql);
std::string sqlText(const ScratchHome& home, const std::string& sql);
std::int64_t sqlInteger(const ScratchHome& home, const std::string& sql);

// The file name of an asset's original in the file store.
std::string storedAs(const ScratchHome& home, const std::string& identifier);

std::filesystem::path originalOf(const ScratchHome& home, const std::string& identifier);

// Adds rows for assets without files: n, and a creation time for each.
void addBareAssets(const ScratchHome& home, int count, std::int64_t firstCreated,
                   std::int64_t step);

// A home whose library holds such assets: so many, a second apart unless said otherwise.
struct BareLibrary : ScratchHome {
    explicit BareLibrary(int count, std::int64_t firstCreated = 1000, std::int64_t step = 1000);
    std::vector<std::string> all; // as listed: the newest first
};

// Paths below `folder`, relative to it, files only; not its sentinels.
std::vector<std::string> filesBelow(const std::filesystem::path& folder);

// Runs the changes as one transaction; answers why it was refused, or nothing when it was done.
std::string change(const std::function<void()>& changes);

// Make an empty one at the top level and answer its identifier.
std::string newAlbum(const std::string& title);
std::string newFolder(const std::string& title);

// What the identifier names; it must name one.
platform::PHAssetCollection album(const std::string& identifier);
platform::PHCollectionList folder(const std::string& identifier);
platform::PHCollection collection(const std::string& identifier);

// As `change`.
std::string file(const std::string& child, const std::string& parent);
std::string add(const std::string& to, const std::vector<std::string>& assets);

std::vector<std::string> identifiers(const platform::PHFetchResult<platform::PHAsset>& assets);

// The assets of an album: newest first, and in the order in which they were added.
platform::PHFetchOptions newestFirst();
std::vector<std::string> newest(const std::string& of);
std::vector<std::string> own(const std::string& of);

// What is kept beside the rows agrees with them, every collection is reached from the top exactly
// once, and SQLite finds nothing wrong.
void expectConsistent(const ScratchHome& home);

} // namespace support

// What every file of tests here would say again.
namespace fs = std::filesystem;
using namespace support;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
