// Which assets an album holds.
#pragma once

#include "platform/asset.h"
#include "platform/local/catalogue/catalogue_connection.h"

namespace local {

// Within a write transaction. Assets go in behind those that are there, in their order; those
// that the album holds already, or that are gone, are passed over.
void addMembers(CatalogueConnection& connection, std::int64_t album,
                const platform::PHFetchResult<platform::PHAsset>& assets);

void removeMembers(CatalogueConnection& connection, std::int64_t album,
                   const platform::PHFetchResult<platform::PHAsset>& assets);

} // namespace local
