#include "tool/export_name.h"

#include "bridge/utf8.h"
#include "tool/text.h"

#include <algorithm>
#include <cctype>

namespace tool {

namespace {

constexpr std::size_t longestName = 255; // bytes

struct Parts {
    std::string stem;
    std::string ending; // with its dot, or empty
};

// What is longer than any ending in use is no ending, and is cut like the rest.
Parts partsOf(const std::string& name) {
    constexpr std::size_t longestEnding = 16;
    const std::size_t dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0 || name.size() - dot > longestEnding)
        return {name, ""};
    return {name.substr(0, dot), name.substr(dot)};
}

// Cut where a character begins.
std::string cutTo(std::string text, std::size_t bytes) {
    if (text.size() <= bytes)
        return text;
    while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80)
        --bytes;
    text.resize(bytes);
    return text;
}

} // namespace

std::string safeName(std::string_view filename) {
    // Written out, an escape would be a backslash: an underline says as well that something was
    // there.
    std::string name;
    const std::string valid = validUtf8(filename);
    for (std::size_t i = 0; i < valid.size();) {
        std::size_t length = 1;
        while (i + length < valid.size() &&
               (static_cast<unsigned char>(valid[i + length]) & 0xC0) == 0x80)
            ++length;
        const std::string character = valid.substr(i, length);
        name += character == "/" || printable(character) != character ? "_" : character;
        i += length;
    }
    if (name.starts_with('.'))
        name.front() = '_';
    return name.empty() ? "unnamed" : name;
}

std::string jpegName(std::string name) {
    Parts parts = partsOf(name);
    std::string ending = parts.ending;
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char letter) { return std::tolower(letter); });
    if (ending == ".jpg" || ending == ".jpeg" || ending == ".jpe")
        return name;
    return parts.stem + ".jpg";
}

std::string numberedName(const std::string& name, unsigned number) {
    Parts parts = partsOf(name);
    const std::string mark = number > 1 ? " (" + std::to_string(number) + ")" : "";
    parts.stem = cutTo(std::move(parts.stem), longestName - parts.ending.size() - mark.size());
    return parts.stem + mark + parts.ending;
}

} // namespace tool
