#include "bridge/json_text.h"

#include <charconv>
#include <cstddef>
#include <limits>

namespace {

bool needsEscape(char byte) {
    return static_cast<unsigned char>(byte) < 0x20 || byte == '"' || byte == '\\';
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
    buffer += '"';
    std::string_view rest = text.value_or(std::string_view());
    while (!rest.empty()) {
        std::size_t plain = 0;
        while (plain < rest.size() && !needsEscape(rest[plain]))
            ++plain;
        buffer.append(rest.substr(0, plain));
        rest.remove_prefix(plain);
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
