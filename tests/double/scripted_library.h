// A photo library that does what a test scripts. It implements every operation of platform/*.h,
// writes each call down as one readable line, and has no policy of its own.
#pragma once

#include "platform/asset.h"
#include "platform/change_requests.h"
#include "platform/files.h"
#include "platform/image_manager.h"
#include "platform/photo_library.h"

#include <deque>
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
platform::PHAssetResource resourceNamed(long type, std::optional<std::string> originalFilename);

} // namespace scripted
