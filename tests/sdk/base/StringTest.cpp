#include "base/String.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

int sign(int v) {
    return (v > 0) - (v < 0);
}

TEST(StringTest, SubstringClampsPositions) {
    const String text(L"abcdef");
    const struct {
        int begin, end;
        const wchar_t* expected;
    } cases[] = {
        {0, 6, L"abcdef"}, {2, 4, L"cd"}, {-3, 2, L"ab"}, {4, 100, L"ef"},
        {6, 6, L""},       {7, 9, L""},   {4, 2, L""},    {3, 3, L""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(String(c.expected), text.substring(c.begin, c.end))
            << "substring(" << c.begin << ", " << c.end << ")";
    }
    EXPECT_EQ(String(L"def"), text.substring(3));
    EXPECT_EQ(String(L"abcdef"), text.substring(-1));
    EXPECT_EQ(String(L""), text.substring(99));
}

TEST(StringTest, IndexOfAndCharAt) {
    const String text(L"a/b/c");
    const struct {
        wchar_t c;
        int from, expected;
    } cases[] = {
        {L'/', 0, 1},  {L'/', 1, 1},   {L'/', 2, 3},  {L'/', 4, -1},
        {L'/', -5, 1}, {L'/', 99, -1}, {L'x', 0, -1}, {L'c', 0, 4},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.expected, text.indexOf(c.c, c.from))
            << "indexOf('" << static_cast<char>(c.c) << "', " << c.from << ")";
    }
    EXPECT_EQ(L'a', text.charAt(0));
    EXPECT_EQ(0, text.charAt(5));
    EXPECT_EQ(0, text.charAt(-1));
}

TEST(StringTest, CompareTo) {
    const struct {
        const wchar_t* a;
        const wchar_t* b;
        int ignoreCase;
        int expected;
    } cases[] = {
        {L"abc", L"abc", 0, 0},
        {L"abc", L"abd", 0, -1},
        {L"abd", L"abc", 0, 1},
        {L"ab", L"abc", 0, -1},
        {L"abc", L"ab", 0, 1},
        {L"", L"", 0, 0},
        {L"", L"a", 0, -1},
        {L"ABC", L"abc", 0, -1},
        {L"ABC", L"abc", 1, 0},
        {L"Abc", L"abD", 1, -1},
        {L"\u00C9t\u00C9", L"\u00E9t\u00E9", 1, 0},
        {L"\u0414", L"\u0434", 1, 0},
        {L"\u00C9", L"\u00E9", 0, -1},
        // Above U+FFFF and escaped bytes compare by value.
        {L"\U0001F600", L"\uFFFF", 0, 1},
        {L"\xDCFF", L"z", 1, 1},
    };
    for (const auto& c : cases) {
        const String a(c.a);
        EXPECT_EQ(c.expected, sign(a.compareTo(String(c.b), c.ignoreCase)))
            << "compare \"" << static_cast<const char*>(a) << "\" with \""
            << static_cast<const char*>(String(c.b)) << "\" ignoreCase=" << c.ignoreCase;
        if (c.ignoreCase == 0) {
            EXPECT_EQ(c.expected, sign(a.compareTo(c.b)));
        }
    }
    EXPECT_EQ(0, String().compareTo(static_cast<const wchar_t*>(nullptr)));
}

TEST(StringTest, NarrowFormFollowsModifications) {
    String s("caf\xC3\xA9");
    EXPECT_EQ(4, s.length());
    EXPECT_STREQ("caf\xC3\xA9", static_cast<const char*>(s));
    s.concat(L'!').concat(" \xE2\x82\xAC").concat(String(L"x"));
    EXPECT_STREQ(
        "caf\xC3\xA9! \xE2\x82\xAC"
        "x",
        static_cast<const char*>(s));
    // Assigning the string's own narrow form must not read freed memory.
    s = static_cast<const char*>(s);
    EXPECT_EQ(String(L"caf\u00E9! \u20ACx"), s);
    s = static_cast<const wchar_t*>(nullptr);
    EXPECT_STREQ("", static_cast<const char*>(s));
    EXPECT_TRUE(s == static_cast<const char*>(nullptr));
    EXPECT_TRUE(String(static_cast<const char*>(nullptr)) == L"");
}

TEST(StringTest, InvalidBytesSurviveRoundTrip) {
    const char bytes[] = "a\xFF\xC0z";
    const String s(bytes);
    EXPECT_EQ(4, s.length());
    EXPECT_STREQ(bytes, static_cast<const char*>(s));
}

}  // namespace
