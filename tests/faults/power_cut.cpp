#include "tests/faults/fault_plan.h"
#include "tests/faults/raw_calls.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <random>
#include <set>
#include <vector>

namespace faults {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t sectorSize = 512;

struct WrittenFile {
    int descriptor = -1; // ours
    std::string durable;
    std::set<std::size_t> lost; // where sectors begin that a sync failed to write
};

struct NameChange {
    std::string path, from;
    std::string aside;         // a second name of the file that lost its name
    bool wasFolder = false;    // a folder had the name
    ino_t inode = 0;           // of what has the name now
    std::set<ino_t> folders{}; // that it is a change of
};

std::map<ino_t, WrittenFile> files;
std::vector<NameChange> names;

std::string bytesOf(int file) {
    std::string bytes(static_cast<std::size_t>(raw::status(file).st_size), '\0');
    syscall(SYS_pread64, file, bytes.data(), bytes.size(), 0);
    return bytes;
}

// Puts the other state's bytes into those sectors that differ and are chosen. What never was there
// reads as zeros.
void mix(std::string& bytes, std::string other, auto isChosen) {
    bytes.resize(std::max(bytes.size(), other.size()));
    other.resize(bytes.size());
    for (std::size_t at = 0; at < bytes.size(); at += sectorSize) {
        if (bytes.compare(at, sectorSize, other, at, sectorSize) != 0 && isChosen(at))
            bytes.replace(at, sectorSize, other, at, sectorSize);
    }
}

// Tolerant: a later change that stays may have taken the name along.
void undo(const NameChange& change) {
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

} // namespace

void noteWrite(int file, off_t from, off_t end) {
    const struct stat found = raw::status(file);
    if (!S_ISREG(found.st_mode))
        return;
    WrittenFile& kept = files[found.st_ino];
    if (kept.descriptor < 0) {
        const std::string same = "/proc/self/fd/" + std::to_string(file);
        kept.descriptor =
            static_cast<int>(syscall(SYS_openat, AT_FDCWD, same.c_str(), O_RDWR | O_CLOEXEC));
        kept.durable = bytesOf(kept.descriptor);
    }
    const auto first = static_cast<std::size_t>(from) / sectorSize * sectorSize;
    kept.lost.erase(kept.lost.lower_bound(first),
                    kept.lost.lower_bound(static_cast<std::size_t>(end)));
}

void noteSync(int file, bool good) {
    const ino_t inode = raw::status(file).st_ino;
    if (good)
        std::erase_if(names, [&](const auto& name) { return name.folders.contains(inode); });
    const auto found = files.find(inode);
    if (found == files.end())
        return;
    WrittenFile& kept = found->second;
    std::string bytes = bytesOf(kept.descriptor);
    const std::size_t size = bytes.size();
    mix(bytes, kept.durable, [&](std::size_t at) {
        if (!good)
            kept.lost.insert(at);
        return kept.lost.contains(at);
    });
    bytes.resize(size);
    if (good)
        kept.durable = std::move(bytes);
}

long noteName(const std::string& path, const std::string& from,
              const std::function<long()>& change) {
    static std::uint64_t asides = 0;
    NameChange name{path, from, std::string(std::getenv("HOME")) + "/" + asideFolder};
    name.aside += "/" + std::to_string(getpid()) + "-" + std::to_string(++asides);
    if (syscall(SYS_linkat, AT_FDCWD, path.c_str(), AT_FDCWD, name.aside.c_str(), 0) != 0)
        name.aside.clear();
    name.wasFolder = S_ISDIR(raw::status(path).st_mode);
    const long done = change();
    if (done < 0)
        return done;
    name.inode = raw::status(path).st_ino;
    for (const std::string& changed : {path, from}) {
        if (!changed.empty())
            name.folders.insert(raw::status(fs::path(changed).parent_path()).st_ino);
    }
    names.push_back(std::move(name));
    return done;
}

void failPower(unsigned loss, std::uint64_t seed) {
    std::mt19937_64 random(seed);
    const auto isLost = [&](std::size_t = 0) { return random() % 100 < loss; };
    for (auto& [inode, file] : files) {
        std::string bytes = bytesOf(file.descriptor);
        const std::size_t size = isLost() ? file.durable.size() : bytes.size();
        mix(bytes, file.durable, isLost);
        bytes.resize(size);
        syscall(SYS_pwrite64, file.descriptor, bytes.data(), size, 0);
        syscall(SYS_ftruncate, file.descriptor, size);
    }
    // From some change on, all that follow in the same folder are undone; a rename is a change of
    // both its folders.
    std::set<ino_t> undoneFrom;
    std::vector<NameChange> undone;
    for (const NameChange& name : names) {
        const auto isUndone = [&](ino_t folder) { return undoneFrom.contains(folder); };
        if (!std::ranges::any_of(name.folders, isUndone) && !isLost())
            continue;
        undoneFrom.insert(name.folders.begin(), name.folders.end());
        undone.push_back(name);
    }
    std::for_each(undone.rbegin(), undone.rend(), undo);
}

} // namespace faults
