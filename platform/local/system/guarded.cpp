#include "platform/local/system/guarded.h"

namespace local {

namespace {

thread_local std::optional<platform::NSError>* kept = nullptr;

} // namespace

std::optional<platform::NSError>* keepFailuresIn(std::optional<platform::NSError>* place) noexcept {
    return std::exchange(kept, place);
}

void keepFailure() noexcept {
    if (!kept || *kept)
        return;
    try {
        throw;
    } catch (const LibraryError& failure) {
        *kept = failure.error();
    } catch (const std::exception& failure) {
        *kept = platform::NSError{std::string(platform::PHPhotosErrorDomain), 0, failure.what()};
    }
}

} // namespace local
