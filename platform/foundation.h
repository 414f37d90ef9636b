// Small values that every operation of the photo library shares: text, errors, object handles,
// the scope that bounds temporary objects.
//
// Text is UTF-8 in std::string; what the library may leave out is std::optional. Everything in
// this namespace may be called from any thread unless a declaration says otherwise. No function
// here throws, unless its comment says so.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// A counted reference to the back end's own object behind a value. The core only carries it.
using Object = std::shared_ptr<const void>;

// The domain of errors that the photo library itself raises.
inline constexpr std::string_view PHPhotosErrorDomain = "PHPhotosErrorDomain";

// The code in that domain for what the user, or a caller on the user's behalf, called off.
inline constexpr long PHPhotosErrorUserCancelled = 3072;

// Why an operation failed. `localizedDescription` is a sentence for people.
struct NSError {
    std::string domain;
    long code = 0;
    std::optional<std::string> localizedDescription;
};

using NSData = std::vector<std::uint8_t>;

// A file named by its path, which stands as it was given.
struct NSURL {
    std::string path;
};

inline NSURL fileURLWithPath(std::string path) {
    return NSURL{std::move(path)};
}

// Opens a scope for the back end's temporary objects on this thread; objc_autoreleasePoolPop
// closes it. Scopes nest. A back end without such objects answers null.
void* objc_autoreleasePoolPush();
void objc_autoreleasePoolPop(void* pool);

} // namespace platform
