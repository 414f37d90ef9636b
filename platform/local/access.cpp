#include "platform/local/access.h"

#include "platform/local/guarded.h"
#include "platform/local/library.h"

namespace local {

bool requireChangeAccess(CatalogueConnection& connection) {
    const std::int64_t status = connection.integer("SELECT access FROM library");
    if (seesEverything(status) || seesChoice(status))
        return seesChoice(status);
    throw LibraryError(platform::PHPhotosErrorDomain, accessDeniedCode,
                       "This application has no access to the photo library.");
}

namespace {

thread_local std::weak_ptr<const long> accessInSnapshot;

} // namespace

std::shared_ptr<const long> accessOfThisThreadsFetch(long status) {
    auto kept = std::make_shared<const long>(status);
    accessInSnapshot = kept;
    return kept;
}

} // namespace local

namespace platform {

long authorizationStatusForAccessLevel(long) {
    if (const auto fetched = local::accessInSnapshot.lock())
        return *fetched;
    // A library that cannot be opened is one that this user may not have now.
    return local::orElse<long>(PHAuthorizationStatusRestricted, [] {
        return static_cast<long>(
            local::Library::open()->connection()->integer("SELECT access FROM library"));
    });
}

void requestAuthorizationForAccessLevel(long accessLevel,
                                        std::function<void(long status)> handler) {
    // The owner's access was granted when the library was made: there is nobody to ask.
    const auto answer = std::move(handler);
    answer(authorizationStatusForAccessLevel(accessLevel));
}

} // namespace platform
