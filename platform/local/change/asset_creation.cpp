#include "platform/local/change/asset_creation.h"

#include "platform/asset.h"
#include "platform/local/catalogue/asset_record.h"
#include "platform/local/change/capture_date.h"
#include "platform/local/change/content_types.h"
#include "platform/local/store/incoming_file.h"
#include "platform/local/system/clock.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace local {

namespace {

// A picture at least this many times as wide as high (or the reverse) is a panorama.
constexpr std::uint64_t panoramaRatio = 2;
constexpr std::uint32_t panoramaLongSide = 4096;

LibraryError invalidResource(const std::string& why) {
    return {platform::PHPhotosErrorDomain, invalidResourceCode, why};
}

std::string lastComponent(const std::string& path) {
    return path.substr(path.find_last_of('/') + 1);
}

// Opens a file to import. Never waits for a pipe's other end, and takes nothing but a regular
// file, whatever stood at the path a moment ago.
UniqueFd openSource(const std::string& path, struct stat& file) {
    UniqueFd source(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!source || fstat(source.get(), &file) != 0)
        throw systemError("The file could not be opened", errno);
    if (!S_ISREG(file.st_mode))
        throw LibraryError(posixErrorDomain, EINVAL, "It is not a regular file.");
    if (file.st_size == 0)
        throw invalidResource("The file is empty.");
    return source;
}

// The present for a file of no year that people know.
std::int64_t modificationTime(const struct stat& file) {
    const std::int64_t seconds = file.st_mtim.tv_sec;
    if (seconds < earliestDate / 1000 || seconds > latestDate / 1000)
        return millisecondsNow();
    return seconds * 1000 + file.st_mtim.tv_nsec / 1000000;
}

bool isPanorama(const MediaInfo& info) {
    const std::uint64_t longSide = std::max(info.width, info.height);
    const std::uint64_t shortSide = std::min(info.width, info.height);
    return longSide >= panoramaLongSide && longSide >= panoramaRatio * shortSide;
}

std::int64_t traitsOf(const MediaInfo& info, MediaKind kind) {
    std::int64_t traits = 0;
    const auto add = [&](AssetTrait trait, bool holds) {
        traits |= holds ? std::int64_t{trait} : 0;
    };
    add(traitAnimated, info.animated);
    add(traitRaw, info.raw);
    add(traitScreenshot, info.screenshot);
    add(traitSelfie, info.selfie);
    add(traitPanorama, kind == MediaKind::photo && isPanorama(info));
    return traits;
}

} // namespace

PreparedAsset::PreparedAsset(const FileStore& store, const AssetCreation& creation)
    : creation_(creation) {
    if (creation_.originalFilename.empty())
        creation_.originalFilename = lastComponent(creation_.sourcePath);
    const std::string& called = creation_.originalFilename;
    const long type = creation_.resourceType;
    if (type != platform::PHAssetResourceTypePhoto && type != platform::PHAssetResourceTypeVideo)
        throw invalidResource("A new asset needs one photo or one video.");
    const MediaKind kind =
        type == platform::PHAssetResourceTypeVideo ? MediaKind::video : MediaKind::photo;

    struct stat file = {};
    const UniqueFd source = openSource(creation_.sourcePath, file);
    storedAs_ = uppercaseText(creation_.uuid);
    if (const std::string ending = storableEnding(called); !ending.empty())
        storedAs_ += "." + ending;
    original_ = std::make_unique<IncomingFile>(store, Stored::original, storedAs_, source.get());
    // The imaging process reads the header while the disk takes the bytes.
    Inspection inspection(original_->readable(), kind);
    original_->place();
    auto answer = inspection.finish();
    if (const auto* failure = std::get_if<ImagingFailure>(&answer))
        throw invalidResource(failure->sentence);
    info_ = std::get<MediaInfo>(std::move(answer));

    contentType_ = contentTypeOfName(called).value_or(info_.contentType);
    const auto captured = info_.captured ? millisecondsSince1970(*info_.captured) : std::nullopt;
    created_ = captured.value_or(modificationTime(file));
}

void PreparedAsset::insert(CatalogueConnection& connection, bool limitedAccess) const {
    const bool video = creation_.resourceType == platform::PHAssetResourceTypeVideo;
    connection
        .statement("INSERT INTO asset (uuid, created, media, width, height, filename, "
                   "content_type, stored_as, hash, size, added, traits) "
                   "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12)")
        .bindBlob(1, creation_.uuid)
        .bind(2, created_)
        .bind(3, std::int64_t{video ? platform::PHAssetMediaTypeVideo
                                    : platform::PHAssetMediaTypeImage})
        .bind(4, std::int64_t{info_.width})
        .bind(5, std::int64_t{info_.height})
        .bind(6, creation_.originalFilename)
        .bind(7, contentType_)
        .bind(8, storedAs_)
        .bindBlob(9, original_->hash())
        .bind(10, original_->size())
        .bind(11, millisecondsNow())
        .bind(12, traitsOf(info_, video ? MediaKind::video : MediaKind::photo))
        .run();
    if (!limitedAccess)
        return;
    // What a host with a limited choice brings in itself joins the choice.
    const std::int64_t n = connection.lastInsertedRow();
    connection.statement("INSERT INTO limited_choice VALUES (?1)").bind(1, n).run();
}

} // namespace local
