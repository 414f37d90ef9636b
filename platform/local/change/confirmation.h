// Asking the user before assets are deleted, where the library's settings want it.
#pragma once

#include "platform/local/catalogue/catalogue_connection.h"

#include <cstddef>

namespace local {

// Whether the program that asks (zenity) is to be found on PATH.
bool canAskAboutDeletions();

// Returns when the deletion may go on; waits for the user as long as it takes. Throws
// PHPhotosErrorDomain 3072 when the user refuses, another LibraryError when nobody could be asked.
void confirmDeletion(CatalogueConnection& connection, std::size_t assets);

} // namespace local
