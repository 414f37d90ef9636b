#include "tests/faults/power_cut.h"

#include "tests/faults/raw_calls.h"

#include <algorithm>
#include <filesystem>
#include <random>

namespace faults {

namespace fs = std::filesystem;

namespace {

constexpr off_t sectorSize = 512;

std::string folderOf(const std::string& path) {
    return path.substr(0, path.find_last_of('/'));
}

off_t sizeOf(int file) {
    struct stat found {};
    return raw::status(file, found) ? found.st_size : 0;
}

bool isSharedMemory(const std::string& path) {
    return path.ends_with("-shm");
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

PowerCut::File* PowerCut::fileOf(int file) {
    struct stat found {};
    if (!raw::status(file, found) || !S_ISREG(found.st_mode) || isSharedMemory(raw::pathOf(file)))
        return nullptr;
    File& kept = files_[found.st_ino];
    if (kept.descriptor < 0) {
        kept.descriptor = raw::open("/proc/self/fd/" + std::to_string(file), O_RDWR | O_CLOEXEC);
        kept.durableSize = found.st_size;
    }
    return &kept;
}

// Only what was there at the last sync is kept: a sector behind its end reads as nothing.
void PowerCut::keepSectors(File& file, off_t offset, off_t end) {
    for (off_t sector = offset / sectorSize; sector * sectorSize < end; ++sector) {
        file.lost.erase(sector);
        if (file.durableSectors.contains(sector))
            continue;
        std::string bytes(static_cast<std::size_t>(sectorSize), '\0');
        const long got = raw::call(SYS_pread64, file.descriptor, bytes.data(), bytes.size(),
                                   sector * sectorSize);
        bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
        file.durableSectors.emplace(sector, std::move(bytes));
    }
}

void PowerCut::willWrite(int file, off_t offset, std::size_t size) {
    if (File* const kept = fileOf(file))
        keepSectors(*kept, offset, offset + static_cast<off_t>(size));
}

void PowerCut::willTruncate(int file, off_t size) {
    if (File* const kept = fileOf(file))
        keepSectors(*kept, size, std::max(size, sizeOf(file)));
}

void PowerCut::synced(int file) {
    struct stat found {};
    if (!raw::status(file, found))
        return;
    if (S_ISDIR(found.st_mode)) {
        std::erase_if(names_, [&](const NameChange& change) {
            return change.place == found.st_ino || change.fromPlace == found.st_ino;
        });
        return;
    }
    const auto kept = files_.find(found.st_ino);
    if (kept == files_.end())
        return;
    std::erase_if(kept->second.durableSectors,
                  [&](const auto& entry) { return !kept->second.lost.contains(entry.first); });
    kept->second.durableSize = found.st_size;
}

void PowerCut::syncFailed(int file) {
    struct stat found {};
    if (!raw::status(file, found))
        return;
    const auto kept = files_.find(found.st_ino);
    if (kept == files_.end())
        return;
    for (const auto& [sector, bytes] : kept->second.durableSectors)
        kept->second.lost.insert(sector);
}

void PowerCut::made(const std::string& path) {
    struct stat found {};
    if (!raw::status(path, found) || isSharedMemory(path))
        return;
    names_.push_back({.path = path, .inode = found.st_ino, .place = raw::inodeOf(folderOf(path))});
    if (S_ISREG(found.st_mode))
        files_.erase(found.st_ino); // the number of a file that is gone for good may be used again
}

std::string PowerCut::keepAside(const std::string& path) {
    std::string aside = shadow_ + "/" + std::to_string(++aside_);
    const bool kept =
        raw::call(SYS_linkat, AT_FDCWD, path.c_str(), AT_FDCWD, aside.c_str(), 0) == 0;
    return kept ? aside : std::string();
}

void PowerCut::removed(const std::string& path, const std::string& aside, bool folder) {
    if (isSharedMemory(path))
        return;
    names_.push_back(
        {.path = path, .aside = aside, .folder = folder, .place = raw::inodeOf(folderOf(path))});
}

void PowerCut::renamed(const std::string& from, const std::string& to, const std::string& aside) {
    names_.push_back({.path = to,
                      .from = from,
                      .aside = aside,
                      .inode = raw::inodeOf(to),
                      .place = raw::inodeOf(folderOf(to)),
                      .fromPlace = raw::inodeOf(folderOf(from))});
}

// Tolerant: a later change that stays may have taken the name along.
void PowerCut::undo(const NameChange& change) {
    std::error_code ignored;
    if (change.inode != 0 && raw::inodeOf(change.path) != change.inode)
        return;
    if (!change.from.empty())
        fs::rename(change.path, change.from, ignored);
    else if (change.inode != 0)
        fs::remove_all(change.path, ignored);
    else if (change.folder)
        fs::create_directory(change.path, ignored);
    if (!change.aside.empty())
        fs::create_hard_link(change.aside, change.path, ignored);
}

void PowerCut::restore(File& file, const std::set<off_t>& sectors, off_t size) {
    for (const off_t sector : sectors) {
        std::string bytes = file.durableSectors[sector];
        bytes.resize(static_cast<std::size_t>(sectorSize)); // what never was reads as zeros
        raw::call(SYS_pwrite64, file.descriptor, bytes.data(), bytes.size(), sector * sectorSize);
    }
    raw::call(SYS_ftruncate, file.descriptor, size);
}

void PowerCut::dropSharedMemory() {
    std::error_code ignored;
    for (const char* below : {"/Lumatrice Library", "/Backup", "/Backup/next-catalogue"})
        fs::remove(folder_ + below + "/library.db-shm", ignored);
}

void PowerCut::drop() {
    for (auto& [inode, file] : files_) {
        std::set<off_t> all;
        for (const auto& [sector, bytes] : file.durableSectors)
            all.insert(sector);
        restore(file, all, file.durableSize);
    }
    for (auto change = names_.rbegin(); change != names_.rend(); ++change)
        undo(*change);
    dropSharedMemory();
}

// From some change on, all that follow in the same folder are undone; a rename is a change of both
// its folders.
void PowerCut::undoSome(std::mt19937_64& random) {
    std::map<ino_t, std::size_t> left; // how many changes of a folder stay
    for (const NameChange& change : names_) {
        ++left[change.place];
        if (change.fromPlace != 0 && change.fromPlace != change.place)
            ++left[change.fromPlace];
    }
    for (auto& [place, count] : left)
        count = random() % (count + 1);
    std::vector<const NameChange*> undone;
    for (const NameChange& change : names_) {
        const ino_t other = change.fromPlace != 0 ? change.fromPlace : change.place;
        if (left[change.place] == 0 || left[other] == 0) {
            left[change.place] = left[other] = 0;
            undone.push_back(&change);
            continue;
        }
        --left[change.place];
        if (other != change.place)
            --left[other];
    }
    for (auto change = undone.rbegin(); change != undone.rend(); ++change)
        undo(**change);
}

void PowerCut::tear(std::uint64_t seed) {
    std::mt19937_64 random(seed);
    for (auto& [inode, file] : files_) {
        const off_t size = random() % 2 != 0 ? file.durableSize : sizeOf(file.descriptor);
        std::set<off_t> chosen;
        for (const auto& [sector, bytes] : file.durableSectors) {
            if (random() % 2 != 0)
                chosen.insert(sector);
        }
        restore(file, chosen, size);
    }
    undoSome(random);
    if (random() % 2 != 0)
        dropSharedMemory();
}

} // namespace faults
