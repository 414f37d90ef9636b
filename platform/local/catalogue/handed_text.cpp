#include "platform/local/catalogue/handed_text.h"

#include <algorithm>
#include <cstddef>

namespace local {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

unsigned char byteAt(std::string_view text, std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
}

// How many bytes the character has that `text` begins with; 0 when these are no UTF-8.
std::size_t lengthOfFirst(std::string_view text) {
    const unsigned char lead = byteAt(text, 0);
    if (lead < 0x80)
        return 1;
    if (lead < 0xC2 || lead > 0xF4)
        return 0;
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(text, i) & 0xC0) != 0x80)
            return 0;
    }
    // Forms longer than they need be, surrogates, and what is above the last character there is.
    const unsigned char second = byteAt(text, 1);
    const bool wrong = (lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
                       (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F);
    return wrong ? 0 : length;
}

} // namespace

std::string handedText(std::string_view text) {
    constexpr std::size_t longestHanded = 3; // bytes of a character inside the plane
    const bool ascii = std::all_of(text.begin(), text.end(), [](char byte) {
        return static_cast<unsigned char>(byte) < 0x80;
    });
    if (ascii)
        return std::string(text);
    std::string handed;
    handed.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = lengthOfFirst(text);
        const bool readable = length > 0 && length <= longestHanded;
        handed += readable ? text.substr(0, length) : replacement;
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return handed;
}

} // namespace local
