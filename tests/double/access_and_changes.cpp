// The library as a whole: scopes, access, transactions and what is asked for inside them.
#include "tests/double/scripted_library.h"

namespace platform {

using scripted::library;

void* objc_autoreleasePoolPush() {
    library().note("open scope");
    return &library();
}

void objc_autoreleasePoolPop(void* pool) {
    library().note(pool == &library() ? "close scope" : "close a scope that was never opened");
}

void requestAuthorizationForAccessLevel(long accessLevel, std::function<void(long)> handler) {
    auto& script = library();
    script.note("request authorization, level " + std::to_string(accessLevel));
    script.runHandler(script.authorizationHandler,
                      [answers = script.authorizationAnswers, handler = std::move(handler)] {
                          for (const long answer : answers)
                              handler(answer);
                      });
}

long authorizationStatusForAccessLevel(long accessLevel) {
    library().note("authorization status, level " + std::to_string(accessLevel));
    return library().authorizationStatus;
}

bool performChangesAndWait(const std::function<void()>& changeBlock,
                           std::optional<NSError>& error) {
    auto& script = library();
    script.note("begin changes");
    if (script.changesOnAnotherThread)
        std::thread(changeBlock).join();
    else
        changeBlock();
    const auto answer = scripted::next(script.changeAnswers);
    script.note(answer.done ? "changes done" : "changes refused");
    error = answer.error;
    if (answer.effect)
        answer.effect();
    return answer.done;
}

PHAssetCreationRequest creationRequestForAsset() {
    library().note("request new asset");
    return {std::make_shared<int>()};
}

void addResourceWithType(const PHAssetCreationRequest& request, long resourceType,
                         const NSURL& fileURL, const PHAssetResourceCreationOptions& options) {
    library().note("add resource, type " + std::to_string(resourceType) + ", " + fileURL.path +
                   ", named " + options.originalFilename.value_or("(nil)") +
                   (options.shouldMoveFile ? ", moved" : ", copied") +
                   (request.object ? "" : ", without a request"));
}

std::optional<PHObjectPlaceholder> placeholderForCreatedAsset(const PHAssetCreationRequest&) {
    return scripted::next(library().placeholders, {PHObjectPlaceholder{"new asset"}});
}

} // namespace platform
