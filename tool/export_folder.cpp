#include "tool/export_folder.h"

#include "platform/asset_resource_manager.h"
#include "platform/files.h"
#include "platform/local/library/host_file.h"
#include "platform/local/store/file_store.h"
#include "tool/export_name.h"
#include "tool/output.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <semaphore>

namespace tool {

namespace {

// A file on its way, removed unless it got its name.
class PartFile {
public:
    explicit PartFile(int folder) : folder_(folder) {
        const std::string uuid = local::uppercaseText(local::randomUuid());
        name_ = ".photos-kit-" + uuid + ".part";
        constexpr mode_t readableByAll = 0666; // less the user's mask
        file_.reset(
            openat(folder, name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, readableByAll));
        if (!file_)
            throw local::systemError("No file could be made in the folder", errno);
    }
    ~PartFile() {
        if (!kept_)
            unlinkat(folder_, name_.c_str(), 0);
    }
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;

    int descriptor() const { return file_.get(); }
    const std::string& name() const { return name_; }
    void keep() { kept_ = true; }

private:
    int folder_;
    std::string name_;
    local::UniqueFd file_;
    bool kept_ = false;
};

// What a transfer's handlers share with the thread that waits for it.
struct Transfer {
    int file = -1;
    std::atomic<std::int64_t> written{0};
    std::atomic<int> writeError{0}; // an errno
    std::optional<platform::NSError> error;
    std::binary_semaphore completed{0};
};

void take(Transfer& transfer, std::span<const std::uint8_t> chunk) {
    while (!chunk.empty() && transfer.writeError == 0 && !interrupted()) {
        const ssize_t taken = ::write(transfer.file, chunk.data(), chunk.size());
        if (taken < 0 && errno == EINTR)
            continue;
        if (taken < 0) {
            transfer.writeError = errno;
            return;
        }
        chunk = chunk.subspan(static_cast<std::size_t>(taken));
        transfer.written += taken;
    }
}

// Throws unless all bytes are in the file and are those that the library once took in.
void transferTo(int file, const platform::PHAssetResource& resource,
                const std::function<void(std::int64_t)>& written) {
    const auto transfer = std::make_shared<Transfer>();
    transfer->file = file;
    const auto request = platform::requestDataForAssetResource(
        resource, {.networkAccessAllowed = true},
        [transfer](std::span<const std::uint8_t> chunk) { take(*transfer, chunk); },
        [transfer](const std::optional<platform::NSError>& error) {
            transfer->error = error;
            transfer->completed.release();
        });
    constexpr std::chrono::milliseconds glance{100};
    while (!transfer->completed.try_acquire_for(glance)) {
        if (interrupted() || transfer->writeError != 0)
            platform::cancelDataRequest(request);
        written(transfer->written);
    }
    if (interrupted())
        throw Stopped{};
    if (transfer->writeError != 0)
        throw local::systemError("The file could not be written", transfer->writeError);
    if (transfer->error)
        throw local::LibraryError(*transfer->error);
}

void dateFile(int file, std::int64_t created) {
    constexpr std::int64_t second = 1000;
    timespec time{};
    time.tv_sec = created / second;
    time.tv_nsec = created % second * 1000000;
    if (time.tv_nsec < 0) {
        --time.tv_sec;
        time.tv_nsec += 1000000000;
    }
    const timespec times[] = {{0, UTIME_OMIT}, time};
    futimens(file, times); // a date that the file system cannot hold is no reason to fail
}

// Renames where nothing stands; false when something does. Some file systems cannot tell: there an
// empty file of our own making holds the place first.
bool renameToFree(int folder, const char* from, const char* to) {
    if (renameat2(folder, from, folder, to, RENAME_NOREPLACE) == 0)
        return true;
    if (errno == EEXIST)
        return false;
    if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP)
        throw local::systemError("The file could not be named", errno);
    const local::UniqueFd place(
        openat(folder, to, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!place && errno == EEXIST)
        return false;
    if (!place || renameat(folder, from, folder, to) != 0) {
        const int error = errno;
        if (place)
            unlinkat(folder, to, 0);
        throw local::systemError("The file could not be named", error);
    }
    return true;
}

} // namespace

ExportFolder::ExportFolder(const std::string& path) {
    if (!local::mayMakeDirectory(path))
        throw Failure("The photo library's own folder is no place for an export.");
    if (!platform::createDirectoryAtPath(path))
        throw Failure("The folder " + path + " could not be made.");
    folder_.reset(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder_)
        throw local::systemError("The folder " + path + " could not be opened", errno);
}

std::string ExportFolder::write(const platform::PHAssetResource& resource, const std::string& name,
                                std::int64_t created,
                                const std::function<void(std::int64_t)>& written) {
    PartFile part(folder_.get());
    transferTo(part.descriptor(), resource, written);
    dateFile(part.descriptor(), created);
    if (fsync(part.descriptor()) != 0)
        throw local::systemError("The file could not be written", errno);
    std::string given = giveName(part.name(), name);
    part.keep();
    return given;
}

// Many assets may have one name: each search for a free number goes on where the last one ended.
std::string ExportFolder::giveName(const std::string& partName, const std::string& name) {
    unsigned& number = lastNumbers_[name];
    for (;;) {
        std::string candidate = numberedName(name, ++number);
        if (renameToFree(folder_.get(), partName.c_str(), candidate.c_str()))
            return candidate;
    }
}

void ExportFolder::sync() const {
    // EINVAL: a file system that has no such operation.
    if (fsync(folder_.get()) != 0 && errno != EINVAL)
        throw local::systemError("The folder could not be written", errno);
}

} // namespace tool
