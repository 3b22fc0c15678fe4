#include "base/GlobFilter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "base/String.h"

namespace {

std::string narrow(const wchar_t* text) {
    return static_cast<const char*>(String(text));
}

TEST(GlobFilterTest, Matches) {
    const struct {
        const wchar_t* pattern;
        const wchar_t* text;
        bool ignoreCase;
        bool matches;
    } cases[] = {
        {L"abc", L"abc", false, true},
        {L"abc", L"abcd", false, false},  // whole text only
        {L"abc", L"xabc", false, false},
        {L"", L"", false, true},
        {L"", L"a", false, false},
        {L"*", L"", false, true},
        {L"*", L"anything at all", false, true},
        {L"a*", L"a", false, true},
        {L"*c", L"abc", false, true},
        {L"*c", L"abcd", false, false},
        {L"a*b*c", L"aXbYbZc", false, true},
        {L"a*b*c", L"aXbYcZ", false, false},
        {L"a**b", L"ab", false, true},
        {L"?", L"", false, false},
        {L"?", L"\u00E9", false, true},
        {L"a?c", L"abc", false, true},
        {L"a?c", L"ac", false, false},
        {L"1.*", L"1.2.3", false, true},
        // Classes, ranges, negation.
        {L"[abc]", L"b", false, true},
        {L"[abc]", L"d", false, false},
        {L"[a-c]x", L"cx", false, true},
        {L"[a-c]x", L"dx", false, false},
        {L"[0-9][0-9]", L"42", false, true},
        {L"[!0-9]", L"4", false, false},
        {L"[!0-9]", L"x", false, true},
        {L"[^0-9]", L"x", false, true},
        {L"[^0-9]", L"", false, false},
        {L"[]]", L"]", false, true},
        {L"[!]]", L"]", false, false},
        {L"[!]]", L"a", false, true},
        {L"[]a]", L"a", false, true},
        {L"[a-]", L"-", false, true},
        {L"[-a]", L"-", false, true},
        {L"[a-c-e]", L"-", false, true},
        {L"[z-a]", L"m", false, false},
        {L"[*?]", L"*", false, true},
        {L"[*?]", L"x", false, false},
        {L"[\u00E0-\u00FF]", L"\u00E9", false, true},
        // Escapes outside and inside classes.
        {L"\\*", L"*", false, true},
        {L"\\*", L"x", false, false},
        {L"a\\?", L"a?", false, true},
        {L"a\\?", L"ab", false, false},
        {L"\\[x]", L"[x]", false, true},
        {L"\\\\", L"\\", false, true},
        {L"[\\]]", L"]", false, true},
        {L"[a\\-z]", L"-", false, true},
        {L"[a\\-z]", L"b", false, false},
        {L"[\\!a]", L"!", false, true},
        // Case folding.
        {L"ABC", L"abc", false, false},
        {L"ABC", L"abc", true, true},
        {L"a*Z", L"AxyZ", true, true},
        {L"[a-z]", L"Q", true, true},
        {L"[A-Z]", L"q", true, true},
        {L"[A-Z]", L"q", false, false},
        {L"[!a]", L"A", true, false},
        {L"\u00C9T\u00C9", L"\u00E9t\u00E9", true, true},
        {L"\u0414*", L"\u0434a", true, true},
        {L"\u00C9", L"\u00E9", false, false},
    };
    for (const auto& c : cases) {
        GlobFilter filter;
        ASSERT_EQ(GlobFilter::GLOB_OK, filter.compile(c.pattern, c.ignoreCase))
            << "pattern: " << narrow(c.pattern);
        EXPECT_EQ(c.matches ? GlobFilter::GLOB_OK : GlobFilter::GLOB_NO_MATCH, filter.match(c.text))
            << "pattern: " << narrow(c.pattern) << " text: " << narrow(c.text)
            << " ignoreCase: " << c.ignoreCase;
    }
}

TEST(GlobFilterTest, MalformedPatternsFailAndMatchNothing) {
    const struct {
        const wchar_t* pattern;
        int expected;
    } cases[] = {
        {nullptr, GlobFilter::GLOB_NULL_PATTERN},
        {L"[abc", GlobFilter::GLOB_UNTERMINATED_CLASS},
        {L"a[", GlobFilter::GLOB_UNTERMINATED_CLASS},
        {L"[]", GlobFilter::GLOB_UNTERMINATED_CLASS},
        {L"[!]", GlobFilter::GLOB_UNTERMINATED_CLASS},
        {L"[a-", GlobFilter::GLOB_UNTERMINATED_CLASS},
        {L"abc\\", GlobFilter::GLOB_TRAILING_ESCAPE},
        {L"[a\\", GlobFilter::GLOB_TRAILING_ESCAPE},
    };
    for (const auto& c : cases) {
        GlobFilter filter;
        ASSERT_EQ(GlobFilter::GLOB_OK, filter.compile(L"*", false));
        EXPECT_EQ(c.expected, filter.compile(c.pattern, false))
            << "pattern: " << (c.pattern ? narrow(c.pattern) : "(null)");
        // The earlier successful pattern is gone.
        EXPECT_EQ(GlobFilter::GLOB_NOT_COMPILED, filter.match(L"abc"));
    }
    GlobFilter fresh;
    EXPECT_EQ(GlobFilter::GLOB_NOT_COMPILED, fresh.match(L""));
}

TEST(GlobFilterTest, NullTextMatchesLikeEmpty) {
    GlobFilter filter;
    ASSERT_EQ(GlobFilter::GLOB_OK, filter.compile(L"*", false));
    EXPECT_EQ(GlobFilter::GLOB_OK, filter.match(nullptr));
    ASSERT_EQ(GlobFilter::GLOB_OK, filter.compile(L"?", false));
    EXPECT_EQ(GlobFilter::GLOB_NO_MATCH, filter.match(nullptr));
}

TEST(GlobFilterTest, ManyStarsAgainstLongTextStayFast) {
    const std::wstring text(10000, L'a');
    GlobFilter filter;
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(GlobFilter::GLOB_OK, filter.compile(L"*a*a*a*a*a*a*a*b", false));
    EXPECT_EQ(GlobFilter::GLOB_NO_MATCH, filter.match(text.c_str()));
    ASSERT_EQ(GlobFilter::GLOB_OK, filter.compile(L"*a*a*a*a*a*a*a*", true));
    EXPECT_EQ(GlobFilter::GLOB_OK, filter.match(text.c_str()));
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_LT(elapsed, std::chrono::seconds(1));
}

}  // namespace
