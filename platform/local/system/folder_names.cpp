#include "platform/local/system/folder_names.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string_view>

namespace local {

namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

Folder openFolder(int parent, const std::string& path) {
    const int fd = openat(parent, path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return nullptr;
    DIR* const folder = fdopendir(fd);
    if (!folder)
        close(fd);
    return Folder(folder);
}

} // namespace

std::vector<std::string> namesIn(int parent, const std::string& path, int* error) {
    int unread = 0;
    if (!error)
        error = &unread;
    std::vector<std::string> names;
    const Folder folder = openFolder(parent, path);
    *error = folder ? 0 : errno;
    while (folder) {
        errno = 0;
        const dirent* const entry = readdir(folder.get());
        *error = errno;
        if (!entry)
            break;
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
    return names;
}

} // namespace local
