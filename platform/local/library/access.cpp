#include "platform/local/library/access.h"

#include "platform/local/library/library.h"

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

std::optional<long> accessInThisThreadsFetch() {
    const auto fetched = accessInSnapshot.lock();
    return fetched ? std::optional(*fetched) : std::nullopt;
}

} // namespace local
