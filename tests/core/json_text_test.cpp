#include "bridge/json_text.h"

#include <gtest/gtest.h>

#include <climits>

using namespace std::string_literals;

namespace {

std::string literal(std::optional<std::string_view> text) {
    std::string buffer = "[";
    appendJsonString(buffer, text);
    EXPECT_EQ(buffer.front(), '[') << "what the buffer held is gone";
    return buffer.substr(1);
}

} // namespace

TEST(JsonText, EscapesQuotesBackslashesAndControlCharacters) {
    EXPECT_EQ(literal("a\"b\\c\t"), R"("a\"b\\c\t")");
    EXPECT_EQ(literal("\n\r"), R"("\n\r")");
    EXPECT_EQ(literal("\b\f\v\x1F\x01"s), R"("\u0008\u000c\u000b\u001f\u0001")");
    EXPECT_EQ(literal("\0"s), R"("\u0000")");
    EXPECT_EQ(literal("\"\"plain\""), R"("\"\"plain\"")");
}

TEST(JsonText, LeavesEverythingElseAsItIs) {
    EXPECT_EQ(literal("a/b \x7F é \u2028\u2029 😀"), "\"a/b \x7F é \u2028\u2029 😀\"");
    for (std::size_t length = 1; length < 600; ++length) {
        const std::string text(length, 'x');
        EXPECT_EQ(literal(text), '"' + text + '"');
        EXPECT_EQ(literal(text + "\n" + text), '"' + text + "\\n" + text + '"');
    }
}

TEST(JsonText, AMissingTextIsAnEmptyOne) {
    EXPECT_EQ(literal(std::nullopt), "\"\"");
    EXPECT_EQ(literal(std::optional<std::string>()), "\"\"");
    EXPECT_EQ(literal(""), "\"\"");
}

TEST(JsonText, NumbersReachTheEndsOfTheirRange) {
    std::string buffer;
    appendJsonNumber(buffer, 0ul);
    buffer += ' ';
    appendJsonNumber(buffer, ULONG_MAX);
    buffer += ' ';
    appendJsonNumber(buffer, LLONG_MIN);
    EXPECT_EQ(buffer, "0 18446744073709551615 -9223372036854775808");
}
