#include "tool/text.h"

#include "bridge/utf8.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <cwchar>
#include <vector>

namespace tool {

namespace {

struct Character {
    char32_t code = 0;
    std::string_view bytes;
    bool valid = true; // else one byte that belongs to no character
};

Character firstCharacter(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    const std::string_view bytes = text.substr(0, length);
    if (!isValidUtf8(bytes))
        return {lead, text.substr(0, 1), false};
    char32_t code = length == 1 ? lead : lead & (0x7Fu >> length);
    for (const char byte : bytes.substr(1))
        code = code << 6 | (static_cast<unsigned char>(byte) & 0x3Fu);
    return {code, bytes, true};
}

// Controls, line separators, marks that turn the direction, and what takes no room at all.
bool isHazardous(char32_t code) {
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0xAD || code == 0x61C ||
           (code >= 0x200B && code <= 0x200F) || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2060 && code <= 0x206F) || code == 0xFEFF ||
           (code >= 0xE0000 && code <= 0xE007F);
}

std::string escaped(const Character& character) {
    if (character.valid && character.code == '\n')
        return "\\n";
    if (character.valid && character.code == '\t')
        return "\\t";
    std::array<char, 16> text{};
    const char* format = character.code < 0x80 || !character.valid ? "\\x%02x" : "\\u%04x";
    std::snprintf(text.data(), text.size(), format, static_cast<unsigned>(character.code));
    return text.data();
}

std::size_t columnsOf(const Character& character) {
    const int columns = wcwidth(static_cast<wchar_t>(character.code));
    return columns < 0 ? 1 : static_cast<std::size_t>(columns);
}

std::vector<Character> charactersOf(std::string_view text) {
    std::vector<Character> characters;
    while (!text.empty()) {
        characters.push_back(firstCharacter(text));
        text.remove_prefix(characters.back().bytes.size());
    }
    return characters;
}

} // namespace

std::string printable(std::string_view text) {
    std::string line;
    for (const Character& character : charactersOf(text)) {
        if (!character.valid || isHazardous(character.code))
            line += escaped(character);
        else
            line += character.bytes;
    }
    return line;
}

std::string validUtf8(std::string_view bytes) {
    std::string valid;
    for (const Character& character : charactersOf(bytes))
        valid += character.valid ? character.bytes : "\xEF\xBF\xBD";
    return valid;
}

std::size_t columnsOf(std::string_view printable) {
    std::size_t columns = 0;
    for (const Character& character : charactersOf(printable))
        columns += columnsOf(character);
    return columns;
}

std::string shortened(const std::string& printable, std::size_t columns) {
    if (columnsOf(printable) <= columns)
        return printable;
    if (columns == 0)
        return "";
    const std::vector<Character> characters = charactersOf(printable);
    const std::size_t ending = columns / 3; // and one column for the ellipsis
    std::string start;
    std::size_t room = columns - ending - 1;
    for (const Character& character : characters) {
        const std::size_t needed = columnsOf(character);
        if (needed > room)
            break;
        room -= needed;
        start += character.bytes;
    }
    std::string end;
    room = ending;
    for (auto character = characters.rbegin(); character != characters.rend(); ++character) {
        const std::size_t needed = columnsOf(*character);
        if (needed > room)
            break;
        room -= needed;
        end.insert(0, character->bytes);
    }
    return start + "…" + end;
}

std::string countText(std::int64_t count, std::string_view one, std::string_view many) {
    return std::to_string(count) + " " + std::string(count == 1 ? one : many);
}

std::string sizeText(std::int64_t bytes) {
    if (bytes < 1000)
        return std::to_string(bytes) + " B";
    constexpr std::array units{"kB", "MB", "GB", "TB", "PB", "EB"};
    double amount = static_cast<double>(bytes) / 1000;
    std::size_t unit = 0;
    for (; amount >= 999.95 && unit + 1 < units.size(); ++unit)
        amount /= 1000;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f %s", amount, units[unit]);
    return text.data();
}

std::string dateText(std::int64_t milliseconds) {
    const auto seconds = static_cast<std::time_t>(milliseconds / 1000 - (milliseconds % 1000 < 0));
    std::tm local{};
    std::array<char, 64> text{};
    if (!localtime_r(&seconds, &local) ||
        std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", &local) == 0)
        return "?";
    return text.data();
}

} // namespace tool
