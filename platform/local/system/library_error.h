// How the embedded library reports a failure to itself: thrown inside platform/local/, turned
// into an NSError (or an empty answer) before anything reaches the core.
#pragma once

#include "platform/foundation.h"

#include <stdexcept>

namespace local {

// The domain of errors that come from the operating system; the code is an errno.
inline constexpr std::string_view posixErrorDomain = "NSPOSIXErrorDomain";

// Codes of PHPhotosErrorDomain.
inline constexpr long invalidResourceCode = 3302;
inline constexpr long accessDeniedCode = 3311;

class LibraryError : public std::runtime_error {
public:
    explicit LibraryError(platform::NSError error)
        : std::runtime_error(error.localizedDescription.value_or("")), error_(std::move(error)) {}
    LibraryError(std::string_view domain, long code, std::string sentence)
        : LibraryError(platform::NSError{std::string(domain), code, std::move(sentence)}) {}

    const platform::NSError& error() const noexcept { return error_; }

private:
    platform::NSError error_;
};

// The failure of a system call, from `error` (an errno): "<what>: <its description>."
LibraryError systemError(const std::string& what, int error);

} // namespace local
