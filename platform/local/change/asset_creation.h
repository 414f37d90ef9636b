// A new asset: its file copied in and examined, then its row in the catalogue.
#pragma once

#include "platform/local/catalogue/catalogue_connection.h"
#include "platform/local/change/change_transaction.h"
#include "platform/local/imaging/imaging.h"
#include "platform/local/store/file_store.h"
#include "platform/local/store/incoming_file.h"

namespace local {

// Copies and examines the file when made; throws when it cannot become an asset, and then
// nothing of it stays.
class PreparedAsset {
public:
    PreparedAsset(const FileStore& store, const AssetCreation& creation);

    // Within the write transaction.
    void insert(CatalogueConnection& connection, bool limitedAccess) const;
    void commitBegins() { original_->commitBegins(); }
    void committed() { original_->committed(); }

private:
    AssetCreation creation_;
    std::string storedAs_;
    std::string contentType_;
    std::int64_t created_ = 0; // milliseconds since 1970
    MediaInfo info_;
    std::unique_ptr<IncomingFile> original_;
};

} // namespace local
