#include "base/GlobFilter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "base/String.h"

namespace {

std::string narrow(const wchar_t* text) {
    return text ? static_cast<const char*>(String(text)) : "(null)";
}

// Anchoring and stars (a null text is ""; a final star also matches an empty rest);
// classes, ranges and negation; escapes outside and inside classes; case folding;
// literals only, literals and a final star, a lone star (matched without the general
// walk, with the same answers).
TEST(GlobFilterTest, Matches) {
    const struct {
        const wchar_t* pattern;
        const wchar_t* text;
        bool ignoreCase;
        bool matches;
    } cases[] = {{L"abc", L"abcd", false, false},      {L"", L"", false, true},
                 {L"*c", L"abcd", false, false},       {L"a*b*c", L"aXbYbZc", false, true},
                 {L"a*b*c", L"aXbYcZ", false, false},  {L"?", L"\u00E9", false, true},
                 {L"?", nullptr, false, false},        {L"[a-c]x", L"dx", false, false},
                 {L"[!0-9]", L"4", false, false},      {L"[^0-9]", L"x", false, true},
                 {L"[]]", L"]", false, true},          {L"[a-c-e]", L"-", false, true},
                 {L"[z-a]", L"m", false, false},       {L"[\u00E0-\u00FF]", L"\u00E9", false, true},
                 {L"\\*", L"x", false, false},         {L"a\\?", L"a?", false, true},
                 {L"\\\\", L"\\", false, true},        {L"[\\]]", L"]", false, true},
                 {L"[a\\-z]", L"b", false, false},     {L"a*Z", L"AxyZ", true, true},
                 {L"[A-Z]", L"q", true, true},         {L"[!a]", L"A", true, false},
                 {L"\u00C9t", L"\u00E9T", true, true}, {L"abc*", L"abc", false, true},
                 {L"*", nullptr, false, true},         {L"a**", L"a", false, true},
                 {L"a*b*", L"ab", false, true},        {L"a*b*", L"ba", false, false},
                 {L"*?*", L"", false, false},          {L"a*c", L"abxbc", false, true},
                 {L"[ab]*", L"A", true, true},         {L"abc", L"ab", false, false},
                 {L"abc", L"abC", false, false},       {L"BASH", L"bash", true, true},
                 {L"bash", L"basH2", true, false},     {L"LIB*", L"libfoo", true, true},
                 {L"lib*", L"li", false, false},       {L"lib*", L"Lib", false, false},
                 {L"\\*x*", L"*xy", false, true},      {L"\\*x*", L"axy", false, false},
                 {L"*", L"any", false, true}};
    for (const auto& c : cases) {
        GlobFilter filter;
        ASSERT_EQ(GlobFilter::GLOB_OK, filter.compile(c.pattern, c.ignoreCase))
            << "pattern: " << narrow(c.pattern);
        EXPECT_EQ(c.matches ? GlobFilter::GLOB_OK : GlobFilter::GLOB_NO_MATCH, filter.match(c.text))
            << "pattern: " << narrow(c.pattern) << " text: " << narrow(c.text)
            << " ignoreCase: " << c.ignoreCase;
    }
    // Many stars against a long text that fails only at its end stay fast.
    const std::wstring text(10000, L'a');
    GlobFilter filter;
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(GlobFilter::GLOB_OK, filter.compile(L"*a*a*a*a*a*a*a*b", false));
    EXPECT_EQ(GlobFilter::GLOB_NO_MATCH, filter.match(text.c_str()));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

TEST(GlobFilterTest, MalformedPatternsFailAndMatchNothing) {
    const struct {
        const wchar_t* pattern;
        int expected;
    } cases[] = {
        {nullptr, GlobFilter::GLOB_NULL_PATTERN},     {L"a[", GlobFilter::GLOB_UNTERMINATED_CLASS},
        {L"[]", GlobFilter::GLOB_UNTERMINATED_CLASS}, {L"[!]", GlobFilter::GLOB_UNTERMINATED_CLASS},
        {L"abc\\", GlobFilter::GLOB_TRAILING_ESCAPE}, {L"[a\\", GlobFilter::GLOB_TRAILING_ESCAPE},
    };
    for (const auto& c : cases) {
        GlobFilter filter;
        ASSERT_EQ(GlobFilter::GLOB_OK, filter.compile(L"*", false));
        EXPECT_EQ(c.expected, filter.compile(c.pattern, false)) << "pattern: " << narrow(c.pattern);
        // The earlier successful pattern is gone.
        EXPECT_EQ(GlobFilter::GLOB_NOT_COMPILED, filter.match(L"abc"));
    }
}

}  // namespace
