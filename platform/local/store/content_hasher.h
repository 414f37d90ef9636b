// The hash by which the library knows the bytes of a file: XXH3, 128 bits, seed 0.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace local {

using ContentHash = std::array<std::uint8_t, 16>; // in its canonical form, big endian

// Takes the bytes of a file one after the other. For one thread at a time.
class ContentHasher {
public:
    ContentHasher();
    ~ContentHasher();
    void take(const std::uint8_t* bytes, std::size_t size);
    ContentHash hash() const; // of what was taken so far

    // True when what was taken has this size in bytes and this hash.
    bool matches(const ContentHash& hash, std::int64_t size) const;

private:
    struct State;
    std::unique_ptr<State> state_;
    std::int64_t size_ = 0;
};

std::string hexadecimal(const ContentHash& hash); // 32 lower-case digits

// Reads the open file from its start to its end, by position: whether it has this size and this
// hash. Throws LibraryError when it cannot be read. `stop`, when there is one, is asked now and
// then; when it answers true the reading ends with false.
bool hasContent(int file, const ContentHash& hash, std::int64_t size,
                const std::function<bool()>& stop = nullptr);

} // namespace local
