// Stored hashes outlive the machine that made them: whatever instructions the processor has, and
// however the bytes come, the hash is the one of the format.
#include "platform/local/store/content_hasher.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

TEST(ContentHasher, BytesInPiecesOfAnyLengthHaveTheHashOfTheFormat) {
    constexpr std::array<std::size_t, 9> pieces{1, 63, 64, 65, 255, 256, 257, 1024, 3000};
    for (const std::size_t size : {0, 1, 16, 17, 128, 240, 241, 256, 257, 1024, 1025, 99'999}) {
        std::vector<std::uint8_t> bytes(size);
        for (std::size_t i = 0; i < size; ++i)
            bytes[i] = static_cast<std::uint8_t>(i * 2654435761U >> 13);
        local::ContentHasher hasher;
        for (std::size_t at = 0, turn = 0; at < size; ++turn) {
            const std::size_t piece = std::min(size - at, pieces[turn % pieces.size()]);
            hasher.take(bytes.data() + at, piece);
            at += piece;
        }
        XXH128_canonical_t canonical;
        XXH128_canonicalFromHash(&canonical, XXH3_128bits(bytes.data(), size));
        local::ContentHash expected = std::to_array(canonical.digest);
        EXPECT_EQ(hasher.hash(), expected) << size;
        EXPECT_TRUE(hasher.matches(expected, static_cast<std::int64_t>(size)));
        EXPECT_FALSE(hasher.matches(expected, static_cast<std::int64_t>(size) + 1));
        expected.back() ^= 1;
        EXPECT_FALSE(hasher.matches(expected, static_cast<std::int64_t>(size)));
    }
}
