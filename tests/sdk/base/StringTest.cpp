#include "base/String.h"

#include <gtest/gtest.h>

namespace {

TEST(StringTest, SubstringAndIndexOfClampPositions) {
    const String text(L"a/b/cd");
    const struct {
        int begin, end;
        const wchar_t* expected;
    } cases[] = {
        {0, 6, L"a/b/cd"}, {2, 4, L"b/"}, {-3, 2, L"a/"}, {4, 100, L"cd"}, {7, 9, L""}, {4, 2, L""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(String(c.expected), text.substring(c.begin, c.end))
            << "substring(" << c.begin << ", " << c.end << ")";
    }
    EXPECT_EQ(1, text.indexOf(L'/', -5));
    EXPECT_EQ(3, text.indexOf(L'/', 2));
    EXPECT_EQ(-1, text.indexOf(L'/', 99));
    EXPECT_EQ(0, text.charAt(6));
}

// Characters above U+FFFF and escaped bytes compare by value, also ignoring case.
TEST(StringTest, CompareTo) {
    const struct {
        const wchar_t* a;
        const wchar_t* b;
        int ignoreCase;
        int expected;
    } cases[] = {
        {L"abc", L"abd", 0, -1},          {L"ABC", L"abc", 0, -1},
        {L"Abc", L"abD", 1, -1},          {L"\u00C9t\u00C9", L"\u00E9t\u00E9", 1, 0},
        {L"\U0001F600", L"\uFFFF", 0, 1}, {L"\xDCFF", L"z", 1, 1},
    };
    for (const auto& c : cases) {
        const int got = String(c.a).compareTo(String(c.b), c.ignoreCase);
        EXPECT_EQ(c.expected, (got > 0) - (got < 0))
            << testing::PrintToString(c.a) << " vs " << testing::PrintToString(c.b)
            << " ignoreCase=" << c.ignoreCase;
    }
}

TEST(StringTest, NarrowFormFollowsModificationsAndKeepsInvalidBytes) {
    String s("caf\xC3\xA9");
    EXPECT_EQ(4, s.length());
    s.concat(L'!').concat(" \xE2\x82\xAC").concat(String(L"x"));
    EXPECT_STREQ("caf\xC3\xA9! \xE2\x82\xACx", static_cast<const char*>(s));
    // Assigning the string's own narrow form must not read freed memory.
    s = static_cast<const char*>(s);
    EXPECT_EQ(String(L"caf\u00E9! \u20ACx"), s);
    const String bad("a\xFF\xC0z");
    EXPECT_EQ(4, bad.length());
    EXPECT_STREQ("a\xFF\xC0z", static_cast<const char*>(bad));
}

}  // namespace
