#include "bridge/json_text.h"

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace {

bool needsEscape(char byte) {
    return static_cast<unsigned char>(byte) < 0x20 || byte == '"' || byte == '\\';
}

constexpr std::uint64_t inEveryByte(std::uint64_t byte) {
    return byte * 0x0101010101010101u;
}

// Whether one of eight bytes may need an escape. Bytes of 0x80 and above never do, yet a block that
// holds one can be suspected: the answer yes only means that a closer look is needed.
bool mayNeedEscape(std::uint64_t block) {
    const auto below = [](std::uint64_t bytes, std::uint64_t limit) {
        return (bytes - inEveryByte(limit)) & ~bytes;
    };
    const std::uint64_t suspects = below(block, 0x20) | below(block ^ inEveryByte('"'), 1) |
                                   below(block ^ inEveryByte('\\'), 1);
    return (suspects & inEveryByte(0x80)) != 0;
}

std::size_t plainLength(std::string_view text) {
    std::size_t length = 0;
    for (std::uint64_t block; length + sizeof block <= text.size(); length += sizeof block) {
        std::memcpy(&block, text.data() + length, sizeof block);
        if (mayNeedEscape(block))
            break;
    }
    while (length < text.size() && !needsEscape(text[length]))
        ++length;
    return length;
}

void appendEscape(std::string& buffer, char byte) {
    constexpr char digits[] = "0123456789abcdef";
    switch (byte) {
    case '\t':
        buffer += "\\t";
        return;
    case '\n':
        buffer += "\\n";
        return;
    case '\r':
        buffer += "\\r";
        return;
    case '"':
        buffer += "\\\"";
        return;
    case '\\':
        buffer += "\\\\";
        return;
    default:
        buffer += "\\u00";
        buffer += digits[(byte >> 4) & 0xF];
        buffer += digits[byte & 0xF];
    }
}

template <class Number>
void appendDecimal(std::string& buffer, Number number) {
    char digits[std::numeric_limits<Number>::digits10 + 2];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, number);
    static_cast<void>(error); // the array holds every value of the type
    buffer.append(digits, end);
}

} // namespace

void appendJsonString(std::string& buffer, std::optional<std::string_view> text) {
    std::string_view rest = text.value_or(std::string_view());
    const std::size_t plain = plainLength(rest);
    if (plain == rest.size()) {
        // The usual case in one step: both quotes, and the text between them.
        const std::size_t start = buffer.size();
        buffer.append(plain + 2, '"');
        rest.copy(buffer.data() + start + 1, plain);
        return;
    }
    buffer += '"';
    while (!rest.empty()) {
        const std::size_t length = plainLength(rest);
        buffer.append(rest.substr(0, length));
        rest.remove_prefix(length);
        if (rest.empty())
            break;
        appendEscape(buffer, rest.front());
        rest.remove_prefix(1);
    }
    buffer += '"';
}

void appendJsonNumber(std::string& buffer, unsigned long number) {
    appendDecimal(buffer, number);
}

void appendJsonNumber(std::string& buffer, long long number) {
    appendDecimal(buffer, number);
}

void appendJsonBoolean(std::string& buffer, bool value) {
    buffer += value ? "true" : "false";
}
