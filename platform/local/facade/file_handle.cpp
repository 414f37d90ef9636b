#include "platform/file_handle.h"

#include "platform/local/library/host_file.h"
#include "platform/local/system/guarded.h"
#include "platform/local/system/write_all.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace platform {

namespace {

local::UniqueFd& descriptorOf(const NSFileHandle& file) {
    return *static_cast<local::UniqueFd*>(file.object.get());
}

} // namespace

std::optional<NSFileHandle> fileHandleForWritingAtPath(const std::string& path) {
    return local::orElse<std::optional<NSFileHandle>>({}, [&]() -> std::optional<NSFileHandle> {
        const local::HostFile place = local::changeableFile(path);
        auto file = std::make_shared<local::UniqueFd>(
            openat(place.folder.get(), place.name.c_str(),
                   O_WRONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
        struct stat status = {};
        if (!*file || fstat(file->get(), &status) != 0 || !S_ISREG(status.st_mode))
            return std::nullopt;
        return NSFileHandle{std::move(file)};
    });
}

void writeData(const NSFileHandle& file, std::span<const std::uint8_t> data) {
    const int target = file.object ? descriptorOf(file).get() : -1;
    if (!local::writeAll(target, data.data(), data.size()))
        throw NSException(local::systemError("The file could not be written", errno)
                              .error()
                              .localizedDescription);
}

void closeFile(const NSFileHandle& file) {
    if (file.object)
        descriptorOf(file).reset();
}

} // namespace platform
