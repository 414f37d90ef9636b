#include "tests/faults/power_cut.h"

#include "tests/faults/raw_calls.h"

#include <algorithm>
#include <filesystem>
#include <random>
#include <utility>

namespace faults {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t sectorSize = 512;

std::string folderOf(const std::string& path) {
    return path.substr(0, path.find_last_of('/'));
}

bool isSharedMemory(const std::string& path) {
    return path.ends_with("-shm");
}

std::string bytesOf(int file) {
    std::string bytes(static_cast<std::size_t>(raw::status(file).st_size), '\0');
    raw::call(SYS_pread64, file, bytes.data(), bytes.size(), 0);
    return bytes;
}

std::string_view sectorOf(std::string_view bytes, std::size_t sector) {
    return bytes.substr(std::min(sector * sectorSize, bytes.size()), sectorSize);
}

// A file's bytes with these sectors of another state; what never was there reads as zeros.
void copySectors(const std::set<std::size_t>& sectors, const std::string& from, std::string& to) {
    for (const std::size_t sector : sectors) {
        std::string bytes(sectorOf(from, sector));
        bytes.resize(sectorSize);
        to.resize(std::max(to.size(), (sector + 1) * sectorSize));
        to.replace(sector * sectorSize, sectorSize, bytes);
    }
}

std::set<std::size_t> differingSectors(const std::string& one, const std::string& other) {
    std::set<std::size_t> differing;
    for (std::size_t i = 0; i * sectorSize < std::max(one.size(), other.size()); ++i) {
        if (sectorOf(one, i) != sectorOf(other, i))
            differing.insert(i);
    }
    return differing;
}

} // namespace

PowerCut& powerCut() {
    static PowerCut* const cut = new PowerCut;
    return *cut;
}

void PowerCut::begin(const std::string& folder, const std::string& shadow) {
    folder_ = folder;
    shadow_ = shadow;
}

void PowerCut::willWrite(int file, off_t from, off_t end) {
    const struct stat found = raw::status(file);
    if (!S_ISREG(found.st_mode) || isSharedMemory(raw::pathOf(file)))
        return;
    File& kept = files_[found.st_ino];
    if (kept.descriptor < 0) {
        const std::string same = "/proc/self/fd/" + std::to_string(file);
        kept.descriptor =
            static_cast<int>(raw::call(SYS_openat, AT_FDCWD, same.c_str(), O_RDWR | O_CLOEXEC));
        kept.durable = bytesOf(kept.descriptor);
    }
    const auto size = static_cast<off_t>(sectorSize);
    for (off_t sector = from / size; sector * size < end; ++sector)
        kept.lost.erase(static_cast<std::size_t>(sector));
}

void PowerCut::synced(int file, bool good) {
    const ino_t inode = raw::status(file).st_ino;
    if (good)
        std::erase_if(names_, [&](const auto& change) { return change.folders.contains(inode); });
    const auto found = files_.find(inode);
    if (found == files_.end())
        return;
    File& kept = found->second;
    std::string bytes = bytesOf(kept.descriptor);
    if (!good) {
        kept.lost.merge(differingSectors(bytes, kept.durable));
        return;
    }
    const std::size_t size = bytes.size();
    copySectors(kept.lost, kept.durable, bytes);
    bytes.resize(size);
    kept.durable = std::move(bytes);
}

void PowerCut::willChange(NameChange& change) {
    const std::string aside = shadow_ + "/" + std::to_string(++aside_);
    const char* const path = change.path.c_str();
    if (raw::call(SYS_linkat, AT_FDCWD, path, AT_FDCWD, aside.c_str(), 0) == 0)
        change.aside = aside;
    change.wasFolder = S_ISDIR(raw::status(change.path).st_mode);
}

void PowerCut::changed(NameChange change) {
    if (isSharedMemory(change.path))
        return;
    change.inode = raw::status(change.path).st_ino;
    for (const std::string& path : {change.path, change.from}) {
        if (!path.empty())
            change.folders.insert(raw::status(folderOf(path)).st_ino);
    }
    names_.push_back(std::move(change));
}

// Tolerant: a later change that stays may have taken the name along.
void PowerCut::undo(const NameChange& change) const {
    std::error_code ignored;
    if (change.inode != 0 && raw::status(change.path).st_ino != change.inode)
        return;
    if (!change.from.empty())
        fs::rename(change.path, change.from, ignored);
    else if (change.inode != 0)
        fs::remove_all(change.path, ignored);
    else if (change.wasFolder)
        fs::create_directory(change.path, ignored);
    if (!change.aside.empty())
        fs::create_hard_link(change.aside, change.path, ignored);
}

void PowerCut::fail(bool torn, std::uint64_t seed) {
    std::mt19937_64 random(seed);
    const auto isLost = [&] { return !torn || random() % 2 != 0; };
    for (auto& [inode, file] : files_) {
        std::string bytes = bytesOf(file.descriptor);
        const std::size_t size = isLost() ? file.durable.size() : bytes.size();
        std::set<std::size_t> lost = differingSectors(bytes, file.durable);
        std::erase_if(lost, [&](std::size_t) { return !isLost(); });
        copySectors(lost, file.durable, bytes);
        bytes.resize(size);
        raw::call(SYS_pwrite64, file.descriptor, bytes.data(), size, 0);
        raw::call(SYS_ftruncate, file.descriptor, size);
    }
    // From some change on, all that follow in the same folder are undone; a rename is a change of
    // both its folders.
    std::map<ino_t, std::size_t> left; // how many changes of a folder stay
    for (const NameChange& change : names_) {
        for (const ino_t folder : change.folders)
            ++left[folder];
    }
    for (auto& [folder, count] : left)
        count = torn ? random() % (count + 1) : 0;
    std::vector<const NameChange*> undone;
    for (const NameChange& change : names_) {
        const auto& folders = change.folders;
        const bool stays = std::ranges::all_of(folders, [&](ino_t i) { return left[i] != 0; });
        for (const ino_t folder : folders)
            left[folder] = stays ? left[folder] - 1 : 0;
        if (!stays)
            undone.push_back(&change);
    }
    for (auto change = undone.rbegin(); change != undone.rend(); ++change)
        undo(**change);
    std::error_code ignored;
    for (const char* below : {"/Lumatrice Library", "/Backup", "/Backup/next-catalogue"}) {
        if (isLost())
            fs::remove(folder_ + below + "/library.db-shm", ignored);
    }
}

} // namespace faults
