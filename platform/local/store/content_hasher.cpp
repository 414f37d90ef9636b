#include "platform/local/store/content_hasher.h"

#include "platform/local/system/library_error.h"

#define XXH_STATIC_LINKING_ONLY // for the state's size
#include <xxhash.h>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

namespace local {

struct ContentHasher::State {
    XXH3_state_t hashing;
};

ContentHasher::ContentHasher() : state_(std::make_unique<State>()) {
    XXH3_128bits_reset(&state_->hashing);
}

ContentHasher::~ContentHasher() = default;

void ContentHasher::take(const std::uint8_t* bytes, std::size_t size) {
    XXH3_128bits_update(&state_->hashing, bytes, size);
    size_ += static_cast<std::int64_t>(size);
}

ContentHash ContentHasher::hash() const {
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, XXH3_128bits_digest(&state_->hashing));
    ContentHash hash{};
    std::copy_n(canonical.digest, hash.size(), hash.begin());
    return hash;
}

bool ContentHasher::matches(const ContentHash& hash, std::int64_t size) const {
    return size_ == size && this->hash() == hash;
}

std::string hexadecimal(const ContentHash& hash) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    text.reserve(2 * hash.size());
    for (const std::uint8_t byte : hash) {
        text.push_back(digits[byte >> 4]);
        text.push_back(digits[byte & 15]);
    }
    return text;
}

bool hasContent(int file, const ContentHash& hash, std::int64_t size,
                const std::function<bool()>& stop) {
    ContentHasher hasher;
    // On the heap: the stack of a host's thread may be small.
    std::vector<std::uint8_t> chunk(std::size_t{256} << 10);
    for (off_t at = 0;;) {
        if (stop && stop())
            return false;
        const ssize_t got = pread(file, chunk.data(), chunk.size(), at);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            throw systemError("The file could not be read", errno);
        if (got == 0)
            return hasher.matches(hash, size);
        hasher.take(chunk.data(), static_cast<std::size_t>(got));
        at += got;
    }
}

} // namespace local
