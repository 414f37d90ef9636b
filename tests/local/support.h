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

// What every file of tests here would say again.
namespace fs = std::filesystem;
using namespace platform;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace support {

// Runs `body` with 0, 1, ... in so many processes at once, which start without an open library if
// this one has none, and fails when one ends by a signal or with a failed expectation.
void inProcesses(int count, const std::function<void(int number)>& body);
void inChild(const std::function<void()>& body);

// As inChild, with mount points of its own. There `mountAt` does as mount(2) does; where the system
// does not allow it, the test is skipped.
void withOwnMounts(const std::function<void()>& body);
void mountAt(const fs::path& place, const fs::path& what, unsigned long flags = 0,
             const char* options = nullptr);

// As withOwnMounts, with the Pictures folder on a small disk of memory.
void onSmallDisk(const std::string& options,
                 const std::function<void(const ScratchHome&, const fs::path&)>& body);

// Begins a process that does `body`, and is killed when the answer goes.
std::shared_ptr<void> otherProcess(const std::function<void()>& body);

// Closes the library that this process has open, so that a process forked from it may open it.
void closeLibrary();

std::ptrdiff_t openDescriptors(); // how many

// From here on this process opens no further file, until the answer goes.
std::shared_ptr<void> exhaustDescriptors();

// Writes a JPEG with a gradient; `seed` makes its bytes differ.
fs::path writePicture(const fs::path& path, int width = 64, int height = 48, int seed = 0);
NSData dataOf(std::string_view text);

struct ImportOutcome {
    std::optional<std::string> identifier; // when done
    NSError error;                         // when not
    std::string sentence() const { return error.localizedDescription.value_or(""); }
};
ImportOutcome importFile(const fs::path& path, long type = PHAssetResourceTypePhoto);

// What a fetch found, walked to its end.
template <class Record>
std::vector<Record> walked(const PHFetchResult<Record>& found) {
    std::vector<Record> all;
    for (std::size_t i = 0; i < found.count(); ++i)
        all.push_back(found.objectAtIndex(i).value());
    EXPECT_FALSE(found.objectAtIndex(found.count()));
    return all;
}

PHFetchOptions newestFirst();
PHFetchResult<PHAsset> listed();
std::vector<std::string> listedIdentifiers();
std::vector<std::string> identifiers(const PHFetchResult<PHAsset>& assets);
std::optional<PHAsset> assetWith(const std::string& identifier);

// Runs statements on the catalogue as another program would.
void runSql(const ScratchHome& home, const std::string& sql);
std::string sqlText(const ScratchHome& home, const std::string& sql);
std::int64_t sqlInteger(const ScratchHome& home, const std::string& sql);

// The file of an asset's original in the file store.
fs::path originalOf(const ScratchHome& home, const std::string& identifier);

// Adds rows for assets without files: n, and a creation time for each.
void addBareAssets(const ScratchHome& home, int count, std::int64_t firstCreated,
                   std::int64_t step);

// A home whose library holds such assets: so many, a second apart unless said otherwise.
struct BareLibrary : ScratchHome {
    explicit BareLibrary(int count, std::int64_t firstCreated = 1000, std::int64_t step = 1000);
    std::vector<std::string> all; // as listed: the newest first
};

// Paths below `folder`, relative to it, files only; not its sentinels.
std::vector<std::string> filesBelow(const fs::path& folder);

// Runs the changes as one transaction; answers why it was refused, or nothing when it was done.
std::string change(const std::function<void()>& changes);
void expectDone(const std::function<void()>& changes);

// Make one at the top level and answer its identifier; the album holds what is given.
std::string newAlbum(const std::string& title, const PHFetchResult<PHAsset>* held = nullptr);
std::string newFolder(const std::string& title);

// What the identifier names; it must name one.
PHAssetCollection album(const std::string& identifier);
PHCollectionList folder(const std::string& identifier);

// As `change`.
std::string file(const std::string& child, const std::string& parent);
std::string add(const std::string& to, const std::vector<std::string>& assets);

// The assets of an album: newest first, and in the order in which they were added.
std::vector<std::string> newest(const std::string& of);
std::vector<std::string> own(const std::string& of);

// What is kept beside the rows agrees with them, every collection is reached from the top exactly
// once, and SQLite finds nothing wrong.
void expectConsistent(const ScratchHome& home);

} // namespace support

using namespace support;
