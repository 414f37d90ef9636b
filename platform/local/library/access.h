// Who may see and change the library, as it is in force now. The owner decides it in
// change/settings.h; it is kept in the catalogue.
#pragma once

#include "platform/local/catalogue/catalogue_connection.h"
#include "platform/photo_library.h"

#include <memory>
#include <optional>

namespace local {

// Throws the error that a change gets without access. Call it inside the change's transaction.
// Answers whether access is limited to a choice of assets.
bool requireChangeAccess(CatalogueConnection& connection);

// While a fetch of this thread holds a snapshot, the access that holds in it: whoever asks during
// the fetch gets the answer that its rows were chosen by, and no second connection is needed.
// Lives as long as the answer is kept.
[[nodiscard]] std::shared_ptr<const long> accessOfThisThreadsFetch(long status);

// That of a fetch of this thread whose answer is still kept; nothing without one.
std::optional<long> accessInThisThreadsFetch();

inline bool seesEverything(long status) {
    return status == platform::PHAuthorizationStatusAuthorized;
}
inline bool seesChoice(long status) {
    return status == platform::PHAuthorizationStatusLimited;
}

} // namespace local
