// How text comes in from the host and goes back.
#include "bridge/arguments.h"
#include "bridge/json_text.h"
#include "bridge/path_component.h"
#include "bridge/utf8.h"
#include "tests/core/support.h"

#include <array>
#include <climits>

using namespace std::string_literals;

struct Arguments : CoreTest {};

static std::string literal(std::optional<std::string_view> text) {
    std::string buffer = "[";
    appendJsonString(buffer, text);
    EXPECT_EQ(buffer.front(), '[') << "what the buffer held is gone";
    return buffer.substr(1);
}

TEST(Utf8, AcceptsTheFirstAndLastCodePointOfEveryLength) {
    for (const char* text : {"", "a", "\x7F", "\u0080", "\u07FF", "\u0800", "\uFFFF", "\uD7FF",
                             "\uE000", "\U00010000", "\U0010FFFF", "Zoë \u2028 日本語.jpg"})
        EXPECT_TRUE(isValidUtf8(text)) << text;
}

TEST(Utf8, RefusesWhatIsNotStandard) {
    const std::string surrogates = "\xED\xA0\xBD\xED\xB8\x80"; // an emoji in modified UTF-8
    for (const std::string& text :
         {"\x80"s, "\xBF"s, "\xC0\x80"s, "\xC1\xBF"s, "\xE0\x9F\xBF"s, "\xF0\x8F\xBF\xBF"s,
          "\xF4\x90\x80\x80"s, "\xF5\x80\x80\x80"s, "\xFF"s, "\xED\xA0\x80"s, "\xED\xBF\xBF"s,
          surrogates, "\xC3"s, "\xE2\x82"s, "\xE2\x28\xA1"s, "\xF0\x9F\x98"s, "\xF0\x9F\x98\x28"s,
          "\xC3\xC3"s}) {
        EXPECT_FALSE(isValidUtf8(text));
        EXPECT_FALSE(isValidUtf8("eight or more ASCII bytes before it " + text));
        EXPECT_FALSE(isValidUtf8(text + "and some after"));
    }
    EXPECT_FALSE(isValidUtf8(std::string_view("é").substr(0, 1))) << "ends where the view ends";
}

TEST_F(Arguments, StringsAreReadAndTheirCharactersReleased) {
    const auto read = [&](const jni::Text& text) {
        return stringArgument(jvm.env(), jvm.reference(text));
    };
    EXPECT_EQ(read("Übersicht"), "Übersicht");
    EXPECT_EQ(read(""), "");
    for (const jni::Text& none :
         std::vector<jni::Text>{nullptr, jni::unreadable, "\xED\xA0\xBD\xED\xB8\x80", "a\xC0\x80z"})
        EXPECT_EQ(read(none), std::nullopt);
    EXPECT_EQ(jvm.charactersTaken, 4);
    EXPECT_EQ(jvm.charactersHeld, 0);
}

TEST_F(Arguments, ArraysDropWhatCannotBeReadAndGiveEachReferenceBackAtOnce) {
    const auto read = [&](const jni::Texts& texts) {
        return stringArrayArgument(jvm.env(), jvm.reference(texts));
    };
    EXPECT_THAT(read({nullptr, "one", jni::unreadable, "\xC0\x80", "", "two"}),
                ElementsAre("one", "", "two"));
    EXPECT_EQ(jvm.elementsTaken, 5);
    EXPECT_EQ(jvm.localRefsDeleted, 5);
    EXPECT_EQ(jvm.mostElementsHeld, 1);
    EXPECT_EQ(jvm.charactersHeld, 0);
    EXPECT_THAT(read(nullptr), IsEmpty());
    EXPECT_THAT(read({}), IsEmpty());
    EXPECT_THAT(read({nullptr, nullptr}), IsEmpty());
}

TEST(PathComponent, IsTheLastOneAndLeavesTheDirectoryWhenItIsTakenAway) {
    const std::vector<std::array<std::string, 3>> table = {{"/a/b.jpg", "b.jpg", "/a"},
                                                           {"/a/b//", "b", "/a"},
                                                           {"/a//b", "b", "/a"},
                                                           {"a/b/c", "c", "a/b"},
                                                           {"/a", "a", "/"},
                                                           {"//a", "a", "/"},
                                                           {"///", "/", "/"},
                                                           {"b.jpg", "b.jpg", ""},
                                                           {"a/", "a", ""},
                                                           {"", "", ""}};
    for (const auto& [path, last, directory] : table) {
        EXPECT_EQ(lastPathComponent(path), last) << path;
        EXPECT_EQ(pathWithoutLastComponent(path), directory) << path;
    }
}

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
