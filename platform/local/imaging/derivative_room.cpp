#include "platform/local/imaging/derivative_room.h"

#include "platform/local/imaging/derivative_file.h"

#include <algorithm>
#include <memory>
#include <tuple>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace local::imaging {

namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

struct Derivative {
    timespec used{};
    std::uint64_t size = 0;
    std::string path;
};

bool wasUsedEarlier(const Derivative& one, const Derivative& other) {
    return std::tie(one.used.tv_sec, one.used.tv_nsec) <
           std::tie(other.used.tv_sec, other.used.tv_nsec);
}

std::vector<std::string> namesIn(int folder, const char* path) {
    UniqueFd opened(openat(folder, path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    const std::unique_ptr<DIR, CloseFolder> listing(opened ? fdopendir(opened.get()) : nullptr);
    std::vector<std::string> names;
    if (!listing)
        return names;
    opened.release();
    while (const dirent* entry = readdir(listing.get()))
        names.emplace_back(entry->d_name);
    return names;
}

void mark(int folder) {
    constexpr std::string_view words =
        "Signature: 8a477f597d28d172789f06886806bc55\n"
        "# Scaled pictures of the photo library, made anew when they "
        "are missing.\n# See https://bford.info/cachedir/\n";
    const UniqueFd file(
        openat(folder, "CACHEDIR.TAG", O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (file && write(file.get(), words.data(), words.size()) < 0)
        unlinkat(folder, "CACHEDIR.TAG", 0); // another time
}

void sweepPart(int folder, const std::string& path) {
    const UniqueFd part(openat(folder, path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (part && flock(part.get(), LOCK_EX | LOCK_NB) == 0)
        unlinkat(folder, path.c_str(), 0);
}

std::vector<Derivative> sweep(int folder) {
    std::vector<Derivative> all;
    for (const std::string& shard : namesIn(folder, ".")) {
        if (shard.size() != 2 || shard == "..")
            continue;
        for (const std::string& name : namesIn(folder, shard.c_str())) {
            const std::string path = shard + "/" + name;
            struct stat status = {};
            if (fstatat(folder, path.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 ||
                !S_ISREG(status.st_mode))
                continue;
            if (name.ends_with(kPartEnding))
                sweepPart(folder, path);
            else
                all.push_back({status.st_mtim, static_cast<std::uint64_t>(status.st_size), path});
        }
    }
    return all;
}

} // namespace

std::uint64_t tidyDerivatives(int folder, std::uint64_t room) {
    mark(folder);
    std::vector<Derivative> all = sweep(folder);
    std::uint64_t held = 0;
    for (const Derivative& derivative : all)
        held += derivative.size;
    if (held <= room)
        return held;
    std::sort(all.begin(), all.end(), wasUsedEarlier);
    for (const Derivative& derivative : all) {
        if (held <= room - room / 10)
            break;
        if (unlinkat(folder, derivative.path.c_str(), 0) == 0)
            held -= derivative.size;
    }
    return held;
}

void DerivativeRoom::keep(int folder, std::uint64_t room) {
    struct stat status = {};
    if (fstat(folder, &status) != 0)
        return;
    const bool known = device_ == status.st_dev && folder_ == status.st_ino;
    if (known && held_ + written_ <= room && written_ <= room / 10)
        return;
    held_ = tidyDerivatives(folder, room);
    written_ = 0;
    device_ = status.st_dev;
    folder_ = status.st_ino;
}

} // namespace local::imaging
