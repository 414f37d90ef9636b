#include "platform/local/system/uuid.h"

#include "platform/local/system/library_error.h"

#include <sys/random.h>

#include <cerrno>

namespace local {

namespace {

constexpr std::size_t uuidTextLength = 36;

int uppercaseDigitValue(char digit) {
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    return digit >= 'A' && digit <= 'F' ? digit - 'A' + 10 : -1;
}

} // namespace

std::string uppercaseText(const Uuid& uuid) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    text.reserve(uuidTextLength + 8); // room for the ending of an identifier
    text.assign(uuidTextLength, '-');
    std::size_t at = 0;
    for (std::size_t i = 0; i < uuid.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            ++at;
        text[at++] = digits[uuid[i] >> 4];
        text[at++] = digits[uuid[i] & 15];
    }
    return text;
}

std::optional<Uuid> uuidFromText(std::string_view text) {
    if (text.size() != uuidTextLength)
        return std::nullopt;
    Uuid uuid{};
    std::size_t nibble = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        if (dash != (text[i] == '-'))
            return std::nullopt;
        if (dash)
            continue;
        const int value = uppercaseDigitValue(text[i]);
        if (value < 0)
            return std::nullopt;
        std::uint8_t& byte = uuid[nibble++ / 2];
        byte = static_cast<std::uint8_t>(byte << 4 | value);
    }
    return uuid;
}

Uuid randomUuid() {
    Uuid uuid{};
    if (getrandom(uuid.data(), uuid.size(), 0) != static_cast<ssize_t>(uuid.size()))
        throw systemError("No random numbers could be had", errno);
    uuid[6] = static_cast<std::uint8_t>((uuid[6] & 0x0f) | 0x40);
    uuid[8] = static_cast<std::uint8_t>((uuid[8] & 0x3f) | 0x80);
    return uuid;
}

} // namespace local
