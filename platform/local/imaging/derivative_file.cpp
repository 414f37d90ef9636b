#include "platform/local/imaging/derivative_file.h"
#include "platform/local/system/write_all.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <ctime>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace local::imaging {

namespace {

// Keys become file names, so nothing but the digits they promise to be.
bool isUsableKey(const std::string& key) {
    return key.size() >= 8 && key.size() <= 128 && std::all_of(key.begin(), key.end(), [](char c) {
               return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
           });
}

UniqueFd openShard(int folder, const std::string& key) {
    return UniqueFd(
        openat(folder, key.substr(0, 2).c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

std::string temporaryName(const std::string& key) {
    static std::atomic<unsigned> counter{0};
    return "." + key + "." + std::to_string(getpid()) + "." + std::to_string(++counter) +
           std::string(kPartEnding);
}

} // namespace

UniqueFd openDerivative(int folder, const std::string& contentKey) {
    if (folder < 0 || !isUsableKey(contentKey))
        return {};
    const std::string name = contentKey.substr(0, 2) + "/" + contentKey + ".jpg";
    // Without O_NONBLOCK a FIFO of that name would hold us up.
    return UniqueFd(openat(folder, name.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
}

void noteUse(int derivative) {
    constexpr std::time_t kDay = 24 * 60 * 60;
    struct stat status = {};
    if (fstat(derivative, &status) == 0 &&
        std::abs(std::difftime(std::time(nullptr), status.st_mtime)) > kDay)
        futimens(derivative, nullptr);
}

void removeDerivative(int folder, const std::string& contentKey) {
    if (folder < 0 || !isUsableKey(contentKey))
        return;
    unlinkat(folder, (contentKey.substr(0, 2) + "/" + contentKey + ".jpg").c_str(), 0);
}

void writeDerivative(int folder, const std::string& contentKey,
                     const std::vector<std::uint8_t>& jpeg) {
    if (folder < 0 || !isUsableKey(contentKey))
        return;
    mkdirat(folder, contentKey.substr(0, 2).c_str(), 0700);
    const UniqueFd shard = openShard(folder, contentKey);
    const std::string temporary = temporaryName(contentKey);
    const UniqueFd file(openat(shard.get(), temporary.c_str(),
                               O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
    // Where files cannot be locked another process may take it for a dead writer's. Then there is
    // no derivative this time.
    if (!file)
        return;
    flock(file.get(), LOCK_EX | LOCK_NB);
    const bool stored =
        writeAll(file.get(), jpeg.data(), jpeg.size()) && fdatasync(file.get()) == 0 &&
        renameat(shard.get(), temporary.c_str(), shard.get(), (contentKey + ".jpg").c_str()) == 0;
    if (!stored)
        unlinkat(shard.get(), temporary.c_str(), 0);
}

} // namespace local::imaging
