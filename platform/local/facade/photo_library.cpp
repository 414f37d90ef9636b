// Who may use the library, and changes to it.
#include "platform/photo_library.h"

#include "platform/local/change/carry_out.h"
#include "platform/local/change/change_transaction.h"
#include "platform/local/library/access.h"
#include "platform/local/library/library.h"
#include "platform/local/system/guarded.h"

namespace platform {

long authorizationStatusForAccessLevel(long) {
    if (const auto fetched = local::accessInThisThreadsFetch())
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

bool performChangesAndWait(const std::function<void()>& changeBlock,
                           std::optional<NSError>& error) {
    try {
        local::ChangeTransaction changes;
        changes.collect(changeBlock);
        local::carryOut(changes);
        return true;
    } catch (const local::LibraryError& failure) {
        error = failure.error();
    } catch (const std::exception& failure) {
        error = NSError{std::string(PHPhotosErrorDomain), 0, failure.what()};
    }
    return false;
}

} // namespace platform
