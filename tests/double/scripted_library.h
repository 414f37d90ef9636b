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

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace scripted {

// How the library calls a completion handler.
enum class HandlerCalls {
    onceBeforeReturning,
    onceFromAnotherThread,
    onceFromAnotherThreadBeforeReturning,
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

// One data request: its chunks, how it ends, and when.
struct Transfer {
    std::vector<std::string> chunks;
    std::optional<platform::NSError> error;
    HandlerCalls handlers = HandlerCalls::onceFromAnotherThread;
    bool runsUntilCancelled = false; // then ends with the cancellation error
    std::vector<std::string> chunksAfterCancel;
};

// One write to a file handle.
struct WriteAnswer {
    bool fails = false;
    std::optional<std::string> reason;
};

// One call of an editing request's handler.
struct EditingAnswer {
    bool hasInput = true;
    std::optional<std::string> imagePath;
};

inline constexpr platform::PHAssetResourceDataRequestID firstDataRequest = 7001;

// Takes the next of what a test has scripted.
template <class Answer>
Answer next(std::deque<Answer>& scripted, Answer otherwise = {}) {
    if (scripted.empty())
        return otherwise;
    otherwise = std::move(scripted.front());
    scripted.pop_front();
    return otherwise;
}

// Is the current one as long as it lives; then the one before it is again.
struct Library {
    Library();
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

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
    std::map<std::string, std::vector<std::optional<platform::PHAssetCollection>>> albumsHolding;
    std::vector<std::optional<platform::PHAssetCollection>> smartAlbums;

    // Pictures.
    std::vector<ImageDelivery> imageDeliveries;
    std::function<void(const std::optional<platform::NSImage>&)> imageHandler; // the newest one
    bool imagesFromAnotherThread = false; // still before the request returns

    // Files.
    std::set<std::string> readablePaths;
    std::map<std::string, platform::UTType> contentTypes; // by path
    std::set<std::string> movieTypes;                     // identifiers
    std::map<std::string, std::string> files;             // bytes by path
    std::deque<WriteAnswer> writeAnswers;                 // what is not scripted succeeds
    std::optional<platform::NSError> fileError;           // of operations that are made to fail

    // Data requests, in the order they are made; they are numbered from firstDataRequest.
    std::deque<Transfer> transfers;

    // Editing. Earlier edits are what the request's test is asked about.
    HandlerCalls editingHandler = HandlerCalls::onceBeforeReturning;
    std::vector<EditingAnswer> editingAnswers;
    std::vector<platform::PHAdjustmentData> earlierEdits;

    // Changes, in the order they are asked for; what is not scripted succeeds.
    std::deque<ChangeAnswer> changeAnswers;
    std::deque<std::optional<platform::PHObjectPlaceholder>> placeholders;
    bool changesOnAnotherThread = false;
    bool givesChangeRequests = true; // for collections that exist

    // By the lines that name them: operations that fail, and what else happens inside one.
    std::set<std::string> failing;
    std::map<std::string, std::function<void()>> reactions;

    // What happened. Threads that still run handlers are joined by operations().
    void note(const std::string& line);
    std::vector<std::string> operations();

    // Notes the line and answers whether the operation that it names succeeds.
    bool attempt(const std::string& line);
    void runHandler(HandlerCalls calls, const std::function<void()>& handler);
    void joinHandlers();

    // The scripted files and data requests, under this lock.
    std::mutex mutex;
    std::condition_variable cancelled;
    std::set<platform::PHAssetResourceDataRequestID> cancelledRequests;
    platform::PHAssetResourceDataRequestID nextDataRequest = firstDataRequest;

private:
    Library* const previous;
    std::mutex notesMutex;
    std::vector<std::string> notes;
    std::vector<std::thread> handlerThreads;
};

// The library that platform/*.h stands for now.
Library& library();

inline platform::NSError errorSaying(const std::string& sentence) {
    return {std::string(platform::PHPhotosErrorDomain), 3302, sentence};
}
inline platform::PHAsset imageAsset(const std::string& identifier) {
    return {.localIdentifier = identifier, .mediaType = platform::PHAssetMediaTypeImage};
}
using Title = std::optional<std::string>;
inline platform::PHAssetCollection albumTitled(const std::string& identifier, const Title& title) {
    return {identifier, title};
}
inline platform::PHAssetCollection smartAlbumTitled(const std::string& identifier,
                                                    const Title& title) {
    return {identifier, title, platform::PHAssetCollectionTypeSmartAlbum};
}
inline platform::PHCollectionList folderTitled(const std::string& identifier, const Title& title) {
    return {identifier, title};
}
inline platform::PHAssetResource resourceNamed(long type, const Title& originalFilename) {
    return {type, originalFilename};
}

} // namespace scripted
