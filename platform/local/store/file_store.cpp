#include "platform/local/store/file_store.h"
#include "platform/local/system/folder_names.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <map>
#include <memory>

namespace local {

namespace {

constexpr std::string_view derivativesFolder = "derivatives";
constexpr std::size_t uuidTextLength = 36;

// What the name of a lock file says about the file beside it.
std::optional<Stored> kindOfLockFile(std::string_view name) {
    for (const Stored kind : {Stored::original, Stored::render}) {
        if (name.ends_with(lockFileEnding(kind)))
            return kind;
    }
    return std::nullopt;
}

bool hasLockFile(int incoming, const std::string& name) {
    for (const Stored kind : {Stored::original, Stored::render}) {
        const std::string lockFile = name + std::string(lockFileEnding(kind));
        if (faccessat(incoming, lockFile.c_str(), F_OK, 0) == 0)
            return true;
    }
    return false;
}

void sweepEditFolder(int incoming, const std::string& name) {
    const UniqueFd folder(openat(incoming, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder && flock(folder.get(), LOCK_EX | LOCK_NB) == 0 && isLinked(folder.get()))
        removeEditFolder(incoming, name);
}

// The folder of a path that may be removed: "<folder>/<first two characters>/<name>".
std::optional<std::string_view> removableFrom(std::string_view path) {
    const std::string_view folder = path.substr(0, path.find('/'));
    const std::string_view rest = path.substr(std::min(path.size(), folder.size() + 1));
    const bool known = folder == folderOf(Stored::original) || folder == folderOf(Stored::render) ||
                       folder == derivativesFolder;
    if (!known || rest.size() < 3 || rest[2] != '/')
        return std::nullopt;
    const std::string_view name = rest.substr(3);
    return isStorableName(name) && rest.starts_with(name.substr(0, 2)) ? std::optional(folder)
                                                                       : std::nullopt;
}

} // namespace

// Edit folders hold files only.
void removeEditFolder(int parent, const std::string& path) {
    for (const std::string& name : namesIn(parent, path)) {
        std::string file = path;
        file.append("/").append(name);
        unlinkat(parent, file.c_str(), 0);
    }
    unlinkat(parent, path.c_str(), AT_REMOVEDIR);
}

std::string_view folderOf(Stored kind) {
    return kind == Stored::original ? "originals" : "renders";
}

std::string_view lockFileEnding(Stored kind) {
    return kind == Stored::original ? ".importing" : ".editing";
}

bool isLinked(int file) {
    struct stat status = {};
    return fstat(file, &status) == 0 && status.st_nlink > 0;
}

bool isStorableName(std::string_view name) {
    return name.size() > 2 && name.front() != '.' &&
           name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

std::string pathOf(Stored kind, std::string_view name) {
    if (!isStorableName(name))
        throw LibraryError(posixErrorDomain, EINVAL,
                           "The catalogue names a file that is none of the library's own.");
    return std::string(folderOf(kind))
        .append("/")
        .append(name.substr(0, 2))
        .append("/")
        .append(name);
}

void FileStore::create() const {
    for (const char* name : {"originals", "renders", "incoming", "derivatives"}) {
        if (mkdirat(folder_, name, 0700) != 0 && errno != EEXIST)
            throw systemError(std::string("The photo library's folder \"") + name +
                                  "\" could not be made",
                              errno);
    }
    // All shelves at once, so that no import has to make one and sync its name.
    for (int shelf = 0; shelf < 256; ++shelf) {
        char name[16];
        std::snprintf(name, sizeof name, "originals/%02X", static_cast<unsigned>(shelf));
        if (mkdirat(folder_, name, 0700) != 0 && errno != EEXIST)
            throw systemError("The photo library's folders could not be made", errno);
    }
    mark(Stored::original);
    mark(Stored::render);
    if (fsync(folder_) != 0)
        throw systemError("The photo library's folders could not be made durable", errno);
}

bool FileStore::holds(Stored kind, const std::string& name) const {
    return isStorableName(name) &&
           faccessat(folder_, pathOf(kind, name).c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0;
}

bool FileStore::isPresent(Stored kind) const {
    const std::string sentinel = std::string(folderOf(kind)).append("/").append(sentinelName);
    return faccessat(folder_, sentinel.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0;
}

void FileStore::requirePresent(Stored kind) const {
    if (!isPresent(kind))
        throw LibraryError(posixErrorDomain, ENOENT,
                           "The photo library's folder \"" + std::string(folderOf(kind)) +
                               "\" is not there, or another one is in its place: perhaps its disk "
                               "is not mounted. Nothing was changed.");
}

void FileStore::mark(Stored kind) const {
    constexpr std::string_view words =
        "This folder belongs to a photo library. Without this file the library takes the folder "
        "for another one.\n";
    const std::string root(folderOf(kind));
    const std::string path = root + "/" + std::string(sentinelName);
    if (mkdirat(folder_, root.c_str(), 0700) != 0 && errno != EEXIST)
        throw systemError("The photo library's folder \"" + root + "\" could not be made", errno);
    const UniqueFd sentinel(
        openat(folder_, path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    const UniqueFd folder(openat(folder_, root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const bool written = sentinel && folder &&
                         pwrite(sentinel.get(), words.data(), words.size(), 0) ==
                             static_cast<ssize_t>(words.size()) &&
                         fsync(sentinel.get()) == 0 && fsync(folder.get()) == 0;
    if (!written)
        throw systemError("The photo library's folder \"" + root + "\" could not be marked", errno);
}

UniqueFd FileStore::open(Stored kind, const std::string& name) const {
    UniqueFd file(openat(folder_, pathOf(kind, name).c_str(),
                         O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!file)
        throw systemError(kind == Stored::original ? "The asset's original could not be opened"
                                                   : "The asset's edit could not be opened",
                          errno);
    return file;
}

bool FileStore::syncFolder(const std::string& path) const {
    const UniqueFd folder(openat(folder_, path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder)
        return errno == ENOENT;
    return fsync(folder.get()) == 0;
}

bool FileStore::makeShelfDurable(Stored kind, const std::string& shelf) const {
    const std::string root(folderOf(kind));
    const std::scoped_lock lock(shelvesMutex_);
    if (durableShelves_.contains(root + "/" + shelf))
        return true;
    const std::vector<std::string> there =
        namesIn(folder_, root); // before the sync that covers them
    if (!syncFolder(root))
        return false;
    for (const std::string& name : there)
        durableShelves_.insert(std::string(root).append("/").append(name));
    return true;
}

std::vector<std::string> FileStore::removeDiscarded(const std::vector<std::string>& paths) const {
    std::map<std::string, std::vector<std::string>> gone; // by folder
    const std::array present{isPresent(Stored::original), isPresent(Stored::render)};
    for (const std::string& path : paths) {
        const std::optional<std::string_view> folder = removableFrom(path);
        // What is not there because its disk is not has still to be removed.
        if (!folder || (*folder == folderOf(Stored::original) && !present[0]) ||
            (*folder == folderOf(Stored::render) && !present[1]))
            continue;
        if (unlinkat(folder_, path.c_str(), 0) == 0 || errno == ENOENT)
            gone[path.substr(0, path.find_last_of('/'))].push_back(path);
    }
    std::vector<std::string> durably;
    for (const auto& [folder, removed] : gone) {
        if (syncFolder(folder))
            durably.insert(durably.end(), removed.begin(), removed.end());
    }
    return durably;
}

std::shared_ptr<const UniqueFd> FileStore::derivatives() {
    const std::lock_guard lock(derivativesMutex_);
    if (derivatives_ && isLinked(derivatives_->get()))
        return derivatives_;
    const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    UniqueFd opened(openat(folder_, "derivatives", flags));
    if (!opened && errno == ENOENT && mkdirat(folder_, "derivatives", 0700) == 0)
        opened.reset(openat(folder_, "derivatives", flags));
    derivatives_ = std::make_shared<const UniqueFd>(std::move(opened));
    return derivatives_;
}

bool FileStore::holdsOriginals() const {
    const auto check = [](int error) {
        if (error != 0 && error != ENOENT)
            throw systemError("The library's originals could not be looked for", error);
    };
    const UniqueFd originals(openat(folder_, "originals", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!originals) {
        check(errno);
        return false;
    }
    int error = 0;
    for (const std::string& shelf : namesIn(folder_, "originals", &error)) {
        if (shelf == sentinelName)
            continue;
        if (!namesIn(originals.get(), shelf, &error).empty())
            return true;
        check(error);
    }
    check(error);
    return false;
}

void FileStore::sweep(const std::function<bool(Stored, const std::string& name)>& isCatalogued,
                      const std::function<void()>& beforeRemoval) const {
    const UniqueFd incoming(openat(folder_, "incoming", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!incoming)
        return;
    bool prepared = false;
    for (const std::string& entry : namesIn(folder_, "incoming")) {
        if (!uuidFromText(std::string_view(entry).substr(0, uuidTextLength)))
            continue; // not ours to judge
        if (entry.ends_with(editFolderEnding)) {
            sweepEditFolder(incoming.get(), entry);
            continue;
        }
        // A file without a lock file is what a sweep left that did not come to its end.
        const std::optional<Stored> isLockFile = kindOfLockFile(entry);
        const Stored kind = isLockFile.value_or(Stored::original);
        const std::string name =
            isLockFile ? entry.substr(0, entry.size() - lockFileEnding(kind).size()) : entry;
        if (!isLockFile && hasLockFile(incoming.get(), name))
            continue; // its lock file's turn comes
        const UniqueFd lockFile(openat(incoming.get(), entry.c_str(), O_RDWR | O_CLOEXEC));
        if (isLockFile && !lockFile)
            continue; // its importer has just finished
        // Locked: its importer is at work. No longer linked: another sweep has been here, and an
        // importer may have begun again under this name.
        if (isLockFile &&
            (flock(lockFile.get(), LOCK_EX | LOCK_NB) != 0 || !isLinked(lockFile.get())))
            continue;
        if (!prepared)
            beforeRemoval();
        prepared = true;
        bool settled = true;
        if (isLockFile && !isCatalogued(kind, name))
            settled = !removeDiscarded({pathOf(kind, name)}).empty();
        unlinkat(incoming.get(), name.c_str(), 0);
        // The lock file stays until what it tells of is gone for good.
        if (isLockFile && settled)
            unlinkat(incoming.get(), entry.c_str(), 0);
    }
}

} // namespace local
