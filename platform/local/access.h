// Who may see and change the library: the owner's decision, kept in the catalogue.
#pragma once

#include "platform/local/catalogue_connection.h"
#include "platform/photo_library.h"

namespace local {

// Throws the error that a change gets without access. Call it inside the change's transaction.
// Answers whether access is limited to a choice of assets.
bool requireChangeAccess(CatalogueConnection& connection);

inline bool seesEverything(long status) {
    return status == platform::PHAuthorizationStatusAuthorized;
}
inline bool seesChoice(long status) {
    return status == platform::PHAuthorizationStatusLimited;
}

} // namespace local
