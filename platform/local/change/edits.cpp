#include "platform/local/change/edits.h"

#include "platform/asset.h"
#include "platform/local/catalogue/asset_record.h"
#include "platform/local/library/discarded_files.h"
#include "platform/local/library/library.h"
#include "platform/local/store/edit_folder.h"
#include "platform/local/store/incoming_file.h"
#include "platform/local/system/clock.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace local {

namespace {

LibraryError refused(const std::string& why) {
    return {platform::PHPhotosErrorDomain, invalidResourceCode, why};
}

UniqueFd openRendered(const EditFolder& folder) {
    struct stat file = {};
    UniqueFd rendered(
        openat(folder.descriptor(), renderedName, O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!rendered || fstat(rendered.get(), &file) != 0)
        throw systemError("The rendered picture could not be opened", errno);
    if (!S_ISREG(file.st_mode) || file.st_size == 0)
        throw refused("The rendered picture is empty.");
    return rendered;
}

} // namespace

void dropEdit(CatalogueConnection& connection, std::int64_t asset) {
    connection
        .statement("UPDATE asset SET edited = 0, "
                   "width = (SELECT original_width FROM edit WHERE edit.asset = asset.n), "
                   "height = (SELECT original_height FROM edit WHERE edit.asset = asset.n) "
                   "WHERE n = ?1 AND edited = 1")
        .bind(1, asset)
        .run();
    connection.statement("DELETE FROM edit WHERE asset = ?1").bind(1, asset).run();
}

PreparedEdit::PreparedEdit(const FileStore& store, const EditWish& wish) : wish_(wish) {
    const UniqueFd rendered = openRendered(*wish.folder);
    auto checked = checkWholeJpeg(rendered.get());
    if (const auto* failure = std::get_if<ImagingFailure>(&checked))
        throw refused("The rendered picture cannot be used: " + failure->sentence);
    width_ = std::get<MediaInfo>(checked).width;
    height_ = std::get<MediaInfo>(checked).height;
    storedAs_ = uppercaseText(randomUuid()) + ".jpg";
    file_ = std::make_unique<IncomingFile>(store, Stored::render, storedAs_, rendered.get());
    file_->place();
}

void PreparedEdit::insert(CatalogueConnection& connection) const {
    Statement asset = connection.statement("SELECT media FROM asset WHERE n = ?1 "
                                           "AND trashed_at IS NULL");
    if (!asset.bind(1, wish_.asset).step())
        throw refused("The asset no longer exists; its edit was not applied.");
    if (asset.integer(0) != platform::PHAssetMediaTypeImage)
        throw refused("A video cannot be edited.");
    dropEdit(connection, wish_.asset); // so that the sizes kept below are the original's
    connection
        .statement("INSERT INTO edit (asset, stored_as, hash, size, original_width, "
                   "original_height, format_identifier, format_version, data, committed) "
                   "SELECT n, ?2, ?3, ?4, width, height, ?5, ?6, ?7, ?8 FROM asset WHERE n = ?1")
        .bind(1, wish_.asset)
        .bind(2, storedAs_)
        .bindBlob(3, file_->hash())
        .bind(4, file_->size())
        .bind(5, wish_.adjustmentData.formatIdentifier)
        .bind(6, wish_.adjustmentData.formatVersion)
        .bindBlob(7, wish_.adjustmentData.data)
        .bind(8, millisecondsNow())
        .run();
    connection.statement("UPDATE asset SET edited = 1, width = ?2, height = ?3 WHERE n = ?1")
        .bind(1, wish_.asset)
        .bind(2, std::int64_t{width_})
        .bind(3, std::int64_t{height_})
        .run();
}

} // namespace local
