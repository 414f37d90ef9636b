#include "bridge/utf8.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

std::size_t asciiRunLength(std::string_view bytes) {
    constexpr std::uint64_t highBits = 0x8080808080808080u;
    std::size_t length = 0;
    for (; length + sizeof highBits <= bytes.size(); length += sizeof highBits) {
        std::uint64_t block;
        std::memcpy(&block, bytes.data() + length, sizeof block);
        if ((block & highBits) != 0)
            break;
    }
    while (length < bytes.size() && static_cast<unsigned char>(bytes[length]) < 0x80)
        ++length;
    return length;
}

// Length of the well-formed sequence of two or more bytes that `bytes` starts with, 0 if none.
// Only the second byte's range depends on the first: it is what rules out overlong forms,
// surrogates and code points that do not exist.
std::size_t multibyteLength(std::string_view bytes) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned char lead = byte(0);
    std::size_t length = 0;
    unsigned char secondFrom = 0x80;
    unsigned char secondTo = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        secondFrom = lead == 0xE0 ? 0xA0 : 0x80;
        secondTo = lead == 0xED ? 0x9F : 0xBF;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        secondFrom = lead == 0xF0 ? 0x90 : 0x80;
        secondTo = lead == 0xF4 ? 0x8F : 0xBF;
    }
    if (length == 0 || bytes.size() < length || byte(1) < secondFrom || byte(1) > secondTo)
        return 0;
    for (std::size_t i = 2; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
    }
    return length;
}

} // namespace

bool isValidUtf8(std::string_view bytes) {
    for (;;) {
        bytes.remove_prefix(asciiRunLength(bytes));
        if (bytes.empty())
            return true;
        const std::size_t length = multibyteLength(bytes);
        if (length == 0)
            return false;
        bytes.remove_prefix(length);
    }
}
