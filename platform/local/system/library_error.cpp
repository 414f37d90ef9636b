#include "platform/local/system/library_error.h"

#include <system_error>

namespace local {

LibraryError systemError(const std::string& what, int error) {
    return {posixErrorDomain, error, what + ": " + std::generic_category().message(error) + "."};
}

} // namespace local
