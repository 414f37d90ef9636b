// How text comes in from the host and goes back.
#include "bridge/arguments.h"
#include "bridge/path_component.h"
#include "bridge/utf8.h"
#include "tests/core/support.h"

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

struct Arguments : CoreTest {};

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
    EXPECT_EQ(stringArgument(jvm.env(), jvm.string("Übersicht")), "Übersicht");
    EXPECT_EQ(stringArgument(jvm.env(), jvm.string("")), "");
    EXPECT_EQ(stringArgument(jvm.env(), nullptr), std::nullopt);
    EXPECT_EQ(stringArgument(jvm.env(), jvm.stringWithoutCharacters()), std::nullopt);
    EXPECT_EQ(stringArgument(jvm.env(), jvm.string("\xED\xA0\xBD\xED\xB8\x80")), std::nullopt);
    EXPECT_EQ(stringArgument(jvm.env(), jvm.string("a\xC0\x80z")), std::nullopt);
    EXPECT_EQ(jvm.charactersTaken, 4);
    EXPECT_EQ(jvm.charactersHeld, 0);
}

TEST_F(Arguments, ArraysDropWhatCannotBeReadAndGiveEachReferenceBackAtOnce) {
    const auto array = jvm.array({nullptr, jvm.string("one"), jvm.stringWithoutCharacters(),
                                  jvm.string("\xC0\x80"), jvm.string(""), jvm.string("two")});
    EXPECT_THAT(stringArrayArgument(jvm.env(), array), ElementsAre("one", "", "two"));
    EXPECT_EQ(jvm.elementsTaken, 5);
    EXPECT_EQ(jvm.localRefsDeleted, 5);
    EXPECT_EQ(jvm.mostElementsHeld, 1);
    EXPECT_EQ(jvm.charactersHeld, 0);
    EXPECT_THAT(stringArrayArgument(jvm.env(), nullptr), IsEmpty());
    EXPECT_THAT(stringArrayArgument(jvm.env(), jvm.array({})), IsEmpty());
    EXPECT_THAT(stringArrayArgument(jvm.env(), jvm.array({nullptr, nullptr})), IsEmpty());
}

TEST(PathComponent, IsTheLastOne) {
    EXPECT_EQ(lastPathComponent("/a/b.jpg"), "b.jpg");
    EXPECT_EQ(lastPathComponent("b.jpg"), "b.jpg");
    EXPECT_EQ(lastPathComponent("/a/b//"), "b");
    EXPECT_EQ(lastPathComponent("/a"), "a");
    EXPECT_EQ(lastPathComponent("///"), "/");
    EXPECT_EQ(lastPathComponent(""), "");
}

TEST(PathComponent, LeavesTheDirectoryWhenItIsTakenAway) {
    for (const auto& [path, directory] :
         std::vector<std::pair<std::string, std::string>>{{"/a/b.jpg", "/a"},
                                                          {"/a/b/", "/a"},
                                                          {"/a//b", "/a"},
                                                          {"a/b/c", "a/b"},
                                                          {"/a", "/"},
                                                          {"//a", "/"},
                                                          {"/", "/"},
                                                          {"a", ""},
                                                          {"a/", ""},
                                                          {"", ""}})
        EXPECT_EQ(pathWithoutLastComponent(path), directory) << path;
}
