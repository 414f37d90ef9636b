// Edits: a rendered picture beside the original, with what its editor keeps. The original never
// changes, so that an edit can always be reverted.
#pragma once

#include "platform/local/change/change_transaction.h"
#include "platform/local/imaging/imaging.h"
#include "platform/local/store/incoming_file.h"

namespace local {

// A rendered picture on its way in. Copies and examines the file when made; throws when it cannot
// become an edit, and then nothing of it stays.
class PreparedEdit {
public:
    PreparedEdit(const FileStore& store, const EditWish& wish);

    // Within the write transaction; takes the place of an earlier edit.
    void insert(CatalogueConnection& connection) const;
    void commitBegins() { file_->commitBegins(); }
    void committed() { file_->committed(); }

private:
    const EditWish& wish_;
    std::string storedAs_;
    std::uint32_t width_ = 0;
    std::uint32_t height_ = 0;
    std::unique_ptr<IncomingFile> file_;
};

// The rendered picture's name in its EditFolder.
inline constexpr const char* renderedName = "rendered.jpg";

// A step of a write transaction: the asset is as it was imported, with or without an edit before.
void dropEdit(CatalogueConnection& connection, std::int64_t asset);

} // namespace local
