// A photo library that does what a test scripts. It implements every operation of platform/*.h,
// writes each call down as one readable line, and has no policy of its own.
#pragma once

#include "platform/asset.h"
#include "platform/asset_change_requests.h"
#include "platform/asset_resource_manager.h"
#include "platform/collection_change_requests.h"
#include "platform/content_editing.h"
#include "platform/file_handle.h"
#include "platform/files.h"
#include "platform/image_manager.h"
#include "platform/photo_library.h"

#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace scripted {

// How the library calls a completion handler.
enum class HandlerCalls {
    onceBeforeReturning,
    onceFromAnotherThread,
    twiceFromAnotherThread, // the second call may come after the waiting call has returned
};

// How one transaction ends. A refused one has run its block all the same.
struct ChangeAnswer {
    bool done = true;
    std::optional<platform::NSError> error;
    std::function<void()> effect; // what else is different from now on
};

// One call of an image request's handler.
struct ImageDelivery {
    bool hasImage = true;
    bool hasBitmap = true;
    std::optional<std::string> encoded; // what the encoder makes of the bitmap
};

struct Library {
    // Access.
    HandlerCalls authorizationHandler = HandlerCalls::onceBeforeReturning;
    std::vector<long> authorizationAnswers = {platform::PHAuthorizationStatusAuthorized};
    long authorizationStatus = platform::PHAuthorizationStatusAuthorized;

    // Assets, in the order that every fetch gives them; nil objects have no value.
    std::vector<std::optional<platform::PHAsset>> assets;
    std::optional<std::size_t> countClaimed; // what the whole library says it holds
    bool firstFoundIsNil = false;            // a lookup finds something, but no object
    std::map<std::string, std::vector<platform::PHAssetResource>> resources; // by identifier

    // Collections. Lookups find what stands under the identifier; a missing value is a nil object.
    // What a collection holds and what holds it stands under its own identifier.
    std::map<std::string, std::optional<platform::PHAssetCollection>> albums; // and smart albums
    std::map<std::string, std::optional<platform::PHCollectionList>> folders;
    std::vector<std::optional<platform::PHCollection>> topLevel;
    std::map<std::string, std::vector<std::optional<platform::PHCollection>>> children;
    std::map<std::string, std::vector<std::optional<platform::PHCollectionList>>> holders;
    std::map<std::string, std::vector<std::optional<platform::PHAsset>>> assetsInAlbum;
    std::vector<std::optional<platform::PHAssetCollection>> smartAlbums;

    // Pictures.
    std::vector<ImageDelivery> imageDeliveries;
    bool imagesFromAnotherThread = false; // still before the request returns

    // Files.
    std::set<std::string> readablePaths;
    std::map<std::string, platform::UTType> contentTypes; // by path
    std::set<std::string> movieTypes;                     // identifiers

    // Changes, in the order they are asked for; what is not scripted succeeds.
    std::deque<ChangeAnswer> changeAnswers;
    std::deque<std::optional<platform::PHObjectPlaceholder>> placeholders;
    bool changesOnAnotherThread = false;
    bool givesChangeRequests = true; // for collections that exist

    // The next scripted placeholder, or one for this identifier.
    std::optional<platform::PHObjectPlaceholder> nextPlaceholder(const std::string& identifier);

    // What happened. Threads that still run handlers are joined by operations().
    void note(const std::string& line);
    std::vector<std::string> operations();
    std::vector<std::thread> handlerThreads;

private:
    std::mutex notesMutex;
    std::vector<std::string> notes;
};

// The library that platform/*.h stands for now; the innermost InstalledLibrary's.
Library& library();

// Makes a library of its own the current one for its lifetime.
struct InstalledLibrary : Library {
    InstalledLibrary();
    ~InstalledLibrary();
    InstalledLibrary(const InstalledLibrary&) = delete;
    InstalledLibrary& operator=(const InstalledLibrary&) = delete;

private:
    Library* const previous;
};

platform::NSError errorSaying(const std::string& sentence);
platform::PHAsset imageAsset(const std::string& identifier);
platform::PHAssetCollection albumTitled(const std::string& identifier,
                                        std::optional<std::string> title);
platform::PHAssetCollection smartAlbumTitled(const std::string& identifier,
                                             std::optional<std::string> title);
platform::PHCollectionList folderTitled(const std::string& identifier,
                                        std::optional<std::string> title);
platform::PHAssetResource resourceNamed(long type, std::optional<std::string> originalFilename);

} // namespace scripted
